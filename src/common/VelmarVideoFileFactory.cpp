// The registries: the one place that knows every container.
#include <functional>
#include <map>

#include "common/Guarded.h"
#include "container/img/ImgContainerCreater.h"
#include "container/img/ImgContainerModifier.h"
#include "container/img/ImgContainerReader.h"
#include "container/rtv/RtvContainerCreater.h"
#include "container/rtv/RtvContainerReader.h"
#include "velmar_video/VelmarVideoFile.h"
#include "velmar_video/rtv/RtvContainerModifier.h"

namespace {

template <typename Interface>
using Registry =
    std::map<std::string, std::function<std::shared_ptr<Interface>(const std::string&)>>;

template <typename Container>
std::shared_ptr<VelmarVideoFileCreater> makeVelmarVideoFileCreater_(const std::string& path) {
  return std::make_shared<Container>(path);
}

template <typename Container>
std::shared_ptr<VelmarVideoFileReader> makeVelmarVideoFileReader_(const std::string& path) {
  return std::make_shared<Container>(path);
}

template <typename Container>
std::shared_ptr<VelmarVideoFileModifier> makeVelmarVideoFileModifier_(const std::string& path) {
  return std::make_shared<Container>(path);
}

const Registry<VelmarVideoFileCreater> mapVelmarVideoFileCreater = {
    {"img", makeVelmarVideoFileCreater_<ImgContainerCreater>},
    {"rtv", makeVelmarVideoFileCreater_<RtvContainerCreater>},
};
const Registry<VelmarVideoFileReader> mapVelmarVideoFileReader = {
    {"img", makeVelmarVideoFileReader_<ImgContainerReader>},
    {"rtv", makeVelmarVideoFileReader_<RtvContainerReader>},
};
const Registry<VelmarVideoFileModifier> mapVelmarVideoFileModifier = {
    {"img", makeVelmarVideoFileModifier_<ImgContainerModifier>},
    {"rtv", makeVelmarVideoFileModifier_<RtvContainerModifier>},
};

template <typename Interface>
std::shared_ptr<Interface> make(const Registry<Interface>& registry, const std::string& path) {
  const auto forExtension = [&]() -> std::shared_ptr<Interface> {
    // The last "." of the whole path, folders included. Without one, npos + 1 wraps to 0.
    const std::string extension = path.substr(path.rfind('.') + 1);
    if (extension.empty() || extension == path) return nullptr;
    const auto maker = registry.find(extension);
    return maker == registry.end() ? nullptr : maker->second(path);
  };
  return guarded("VelmarVideoFileFactory", "make", std::shared_ptr<Interface>(), forExtension);
}

}  // namespace

std::shared_ptr<VelmarVideoFileCreater> makeVelmarVideoFileCreater(const std::string& path) {
  return make(mapVelmarVideoFileCreater, path);
}

std::shared_ptr<VelmarVideoFileReader> makeVelmarVideoFileReader(const std::string& path) {
  return make(mapVelmarVideoFileReader, path);
}

std::shared_ptr<VelmarVideoFileModifier> makeVelmarVideoFileModifier(const std::string& path) {
  return make(mapVelmarVideoFileModifier, path);
}

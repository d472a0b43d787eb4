// The registries of containers. No other file knows all of them.
#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "base/Guarded.h"
#include "container/img/ImgContainerCreater.h"
#include "container/img/ImgContainerModifier.h"
#include "container/img/ImgContainerReader.h"
#include "container/rtv/RtvContainerCreater.h"
#include "container/rtv/RtvContainerReader.h"
#include "velmar_video/VelmarVideoFile.h"
#include "velmar_video/rtv/RtvContainerModifier.h"

using namespace velmar::detail;

namespace {

// Compile-time constants, so that static objects of a program can use the factories at any time.
template <typename Interface>
using Registry =
    std::array<std::pair<std::string_view, std::shared_ptr<Interface> (*)(const std::string&)>, 2>;

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

constexpr Registry<VelmarVideoFileCreater> mapVelmarVideoFileCreater = {
    {{"img", makeVelmarVideoFileCreater_<ImgContainerCreater>},
     {"rtv", makeVelmarVideoFileCreater_<RtvContainerCreater>}}};
constexpr Registry<VelmarVideoFileReader> mapVelmarVideoFileReader = {
    {{"img", makeVelmarVideoFileReader_<ImgContainerReader>},
     {"rtv", makeVelmarVideoFileReader_<RtvContainerReader>}}};
constexpr Registry<VelmarVideoFileModifier> mapVelmarVideoFileModifier = {
    {{"img", makeVelmarVideoFileModifier_<ImgContainerModifier>},
     {"rtv", makeVelmarVideoFileModifier_<RtvContainerModifier>}}};

template <typename Interface>
std::shared_ptr<Interface> make(const Registry<Interface>& registry, const std::string& path) {
  const auto forExtension = [&]() -> std::shared_ptr<Interface> {
    // The last "." of the whole path, folders included. Without one, npos + 1 wraps to 0.
    const std::string extension = path.substr(path.rfind('.') + 1);
    if (extension.empty() || extension == path) return nullptr;
    const auto maker = std::find_if(registry.begin(), registry.end(),
                                    [&](const auto& entry) { return entry.first == extension; });
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

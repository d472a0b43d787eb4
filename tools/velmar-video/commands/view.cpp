#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include "program/InputOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "server/ViewerServer.h"

namespace velmar::tool {

namespace {

struct Options {
  InputOptions inputs;
  viewer::ServerOptions server;
  bool noBrowser = false;
};

// How a program starts that is not to end with this one, nor to keep its output open.
class Detached {
 public:
  Detached() {
    posix_spawnattr_init(&attributes_);
    posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK);
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes_, &none);
    posix_spawn_file_actions_init(&files_);
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      posix_spawn_file_actions_addopen(&files_, fd, "/dev/null", O_RDWR, 0);
    }
  }
  ~Detached() {
    posix_spawn_file_actions_destroy(&files_);
    posix_spawnattr_destroy(&attributes_);
  }
  Detached(const Detached&) = delete;
  Detached& operator=(const Detached&) = delete;

  bool run(std::string program, std::string argument) const {
    char* const arguments[] = {program.data(), argument.data(), nullptr};
    pid_t process = 0;
    return posix_spawnp(&process, program.c_str(), &files_, &attributes_, arguments, environ) == 0;
  }

 private:
  posix_spawnattr_t attributes_{};
  posix_spawn_file_actions_t files_{};
};

// By the program that the desktop opens addresses with, if there is a desktop.
void openBrowser(const std::string& url, CommandJob& job) {
  if (std::getenv("DISPLAY") == nullptr && std::getenv("WAYLAND_DISPLAY") == nullptr) return;
  if (!Detached().run("xdg-open", url)) {
    job.note("browser", "there is no xdg-open to start it; open the address yourself");
  }
}

ExitStatus view(const Options& options, CommandJob& job) {
  viewer::ServerOptions server = options.server;
  server.recordings = options.inputs.files(job);
  if (server.recordings.empty()) return job.status();
  const auto stage = job.begin("viewer", 0);
  const auto shown = viewer::startServer(server);
  StandardOutput output;
  output.write(shown->url() + "\n");
  output.flush();
  if (!options.noBrowser) openBrowser(shown->url(), job);
  stage->waitReadable(shown->endedDescriptor());
  shown->checkListens();
  return job.status();
}

// Strict, since the host becomes part of the page's security policy.
bool isTilesAddress(std::string_view address) {
  if (!address.starts_with("https://") && !address.starts_with("http://")) return false;
  address.remove_prefix(address.find("//") + 2);
  const std::string_view host = address.substr(0, address.find('/'));
  if (host.empty() || host.front() == ':') return false;
  const auto isOfHost = [](unsigned char c) {
    return std::isalnum(c) || std::string_view("_.-:").find(c) != std::string_view::npos;
  };
  const auto has = [address](const char* part) { return address.find(part) != address.npos; };
  return std::all_of(host.begin(), host.end(), isOfHost) &&
         address.find_first_of("'\";, \t\r\n\v\f") == address.npos && has("{z}") && has("{x}") &&
         has("{y}");
}

void checkUsage(const Options& options) {
  options.inputs.checkUsage("view");
  const std::string& tiles = options.server.tiles;
  if (!tiles.empty() && !isTilesAddress(tiles)) {
    throw UsageError("view: --tiles is an address such as https://HOST/{z}/{x}/{y}.png");
  }
}

void addOptions(CLI::App& command, Options& options) {
  options.inputs.addTo(command);
  options.inputs.addRangesTo(command, nullptr);
  constexpr int kHighestPort = 65535;
  command.add_option("--port", options.server.port, "Port to listen at; a free one if not given")
      ->type_name("N")
      ->check(CLI::Range(0, kHighestPort).description(""));
  command
      .add_option("--bind", options.server.address,
                  "Address to listen at, 127.0.0.1 if not given. Whoever can reach another one and "
                  "has the printed address sees the recordings")
      ->type_name("ADDRESS");
  command
      .add_option("--tiles", options.server.tiles,
                  "Tiles for the map, as https://HOST/{z}/{x}/{y}.png; they tell that host which "
                  "places are looked at. Without them the map is plain")
      ->type_name("URL");
  command.add_flag("--no-browser", options.noBrowser, "Only print the address");
  command.add_flag("--once", options.server.once, "End when the last page is closed");
}

}  // namespace

void addViewCommand(Tool& tool) {
  tool.addCommand<Options>({"view", "Show recordings in a browser, from a server on this machine.",
                            "view drive.rtv\n"
                            "  velmar-video view day --recursive --no-browser"},
                           {addOptions, view, checkUsage});
}

}  // namespace velmar::tool

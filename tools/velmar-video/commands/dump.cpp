#include <exception>

#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/recording/Recording.h"

#if __has_include(<velmar_logger/control.h>)
#include <velmar_logger/control.h>
#endif

namespace velmar::tool {

namespace {

// Puts the library's log lines together to lines of text.
class DumpText {
 public:
  explicit DumpText(StandardOutput& output) : output_(output) {}

  // The device id comes in pieces, between its name and a line end.
  void take(std::string_view message) {
    if (message == "device_id: ") inDeviceId_ = true;
    if (message == "\n") inDeviceId_ = false;
    while (message.ends_with('\n')) message.remove_suffix(1);
    write(message);
    if (!inDeviceId_) output_.write("\n");
  }

 private:
  // A file's bytes must not end a line or steer a terminal.
  void write(std::string_view text) {
    static constexpr char kDigits[] = "0123456789abcdef";
    for (const char character : text) {
      const auto byte = static_cast<unsigned char>(character);
      if (byte >= 0x20 && byte < 0x7F) {
        output_.write({&character, 1});
      } else {
        const char escaped[] = {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xF]};
        output_.write({escaped, sizeof escaped});
      }
    }
  }

  StandardOutput& output_;
  bool inDeviceId_ = false;
};

struct Options {
  std::string file;
};

ExitStatus dump(const Options& options, CommandJob& job) {
  const std::string& file = options.file;
  if (!isRtvPath(file)) {
    throw Failure(file, "only rtv recordings can be dumped; info shows others",
                  VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E);
  }
  const Recording recording = openRecording(file, job);
  StandardOutput output;
#if __has_include(<velmar_logger/control.h>)
  DumpText text(output);
  std::exception_ptr failure;  // must not leave the library's log call
  velmar_logger::setSink([&](int, const char*, const char* message) {
    try {
      if (!failure) text.take(message);
    } catch (...) {
      failure = std::current_exception();
    }
  });
  recording.parser().dump();
  velmar_logger::setSink({});
  if (failure) std::rethrow_exception(failure);
#else
  // The device's library has the log, and with it the dump.
  recording.parser().dump();
  output.write("the dump is in the device's log\n");
#endif
  output.flush();
  return job.status();
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("file", options.file, "The recording, FILE.rtv")->required();
}

}  // namespace

void addDumpCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"dump", "Show an rtv's header and tags as its parser holds them, for debugging.",
       "dump drive.rtv\n\n"
       "The CAN signals shown differ from those in the file, since the parser realigns them.\n"
       "frames --json shows the file's values."},
      {addOptions, dump});
}

}  // namespace velmar::tool

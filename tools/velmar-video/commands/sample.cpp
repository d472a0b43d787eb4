#include <algorithm>
#include <cmath>

#include "program/DescriptionOptions.h"
#include "program/OutputGuard.h"
#include "program/Tool.h"
#include "scene/SampleScene.h"
#include "toolkit/recording/RecordFrames.h"
#include "toolkit/recording/Recording.h"

namespace velmar::tool {

namespace {

// Fixed, so that two samples are equal.
constexpr std::uint64_t kStartTime = 1700000000000000;
constexpr std::uint64_t kTransferTime = 40000;
constexpr unsigned char kDeviceId[] = {0x0A, 0xFF, 0x53, 0x41, 0x4D, 0x50, 0x4C, 0x45,
                                       0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07,
                                       0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F};

constexpr double kStartLongitude = 11.5755;  // degrees
constexpr double kStartLatitude = 48.1374;
constexpr int kStartAltitude = 519;  // metres

struct Options {
  std::string output;
  unsigned int frames = 50;
  detail::JpegSize size{1280, 800};
  double framesPerSecond = 30;
  RtvVersionOption rtvVersion;
  bool force = false;
};

// The camera that SampleScene draws with.
std::string cameraParams(const Options& options) {
  const std::string focalLength = std::to_string(options.size.width * 4 / 5);
  const std::string centerX = std::to_string(options.size.width / 2);
  const std::string centerY = std::to_string(options.size.height * 9 / 20);
  return "{\"camera_matrix\": [[" + focalLength + ", 0, " + centerX + "], [0, " + focalLength +
         ", " + centerY + "], [0, 0, 1]], \"distortion\": [0, 0, 0, 0, 0], " +
         "\"height_above_road_mm\": 1400}";
}

RecordingDescription describe(const Options& options) {
  RecordingDescription description;
  description.setSize(options.size);
  description.deviceId.assign(std::begin(kDeviceId), std::end(kDeviceId));
  description.version = options.rtvVersion.version(options.output).value_or(RTV_VER_04);
  description.undistorted = true;
  description.cameraParams = cameraParams(options);
  description.extendedInfo = R"({"scene": "drawn country road", "weather": "fair"})";
  description.startTime = kStartTime;
  description.lng = nearestNds(kStartLongitude);
  description.lat = nearestNds(kStartLatitude);
  if (description.version == RTV_VER_04) description.alt = kStartAltitude * 100;
  if (description.version == RTV_VER_03) description.alt = kStartAltitude;
  return description;
}

int hundredths(double value) { return static_cast<int>(std::lround(value * 100)); }

// Position, speed and bus signals that fit the picture.
FrameTag tagOf(const SampleScene::Motion& motion, double framesPerSecond) {
  constexpr double kMetresPerWheelTick = 0.02;
  constexpr double kDegreesPerRadian = 57.29577951308232;
  const double speed = SampleScene::metresPerFrame() * framesPerSecond;
  FrameTag tag;
  tag.x = hundredths(motion.east);
  tag.y = hundredths(motion.north);
  tag.relativeDistance = static_cast<unsigned int>(hundredths(motion.travelled));
  tag.speed = static_cast<unsigned short>(std::min(hundredths(speed), 65535));
  const long degrees = std::lround(motion.heading * kDegreesPerRadian);
  tag.direction = static_cast<unsigned short>((degrees % 360 + 360) % 360);

  const auto metresPerSecond = static_cast<float>(speed);
  const auto ticks = static_cast<unsigned int>(motion.travelled / kMetresPerWheelTick);
  tag.can.vehicle_speed = metresPerSecond;
  tag.can.yaw_rate = static_cast<float>(motion.curvature * speed);
  tag.can.acceleraion_y = static_cast<float>(motion.curvature * speed * speed);
  tag.can.steering_wheel_steering_angle = static_cast<float>(motion.curvature * 42);
  tag.can.travelled_distance = static_cast<unsigned short>(std::lround(motion.travelled)) % 65535;
  tag.can.is_reverse_gear = 0;
  tag.can.wheel_tick_left_front = tag.can.wheel_tick_right_front = ticks;
  tag.can.wheel_tick_left_rear = tag.can.wheel_tick_right_rear = ticks;
  tag.can.wheel_speed_left_front = tag.can.wheel_speed_right_front = metresPerSecond;
  tag.can.wheel_speed_left_rear = tag.can.wheel_speed_right_rear = metresPerSecond;
  tag.can.abs_active = tag.can.brake_active = 0;
  return tag;
}

// Draws them.
class SampleFrames final : public FrameSource {
 public:
  explicit SampleFrames(const Options& options)
      : options_(options),
        clock_(kStartTime, options.framesPerSecond),
        scene_(options.size.width, options.size.height) {}

  std::size_t count() const override { return options_.frames; }

  bool read(std::size_t at, NewFrame& frame) override {
    const std::uint64_t time = clock_.at(at);
    frame.jpeg = scene_.jpeg(static_cast<unsigned int>(at));
    frame.times = {time, time + kTransferTime};
    frame.tag = tagOf(motion_, options_.framesPerSecond);
    motion_ = SampleScene::next(motion_);
    return true;
  }

 private:
  const Options& options_;
  FrameClock clock_;
  SampleScene scene_;
  SampleScene::Motion motion_ = SampleScene::start();
};

ExitStatus drawSample(const Options& options, CommandJob& job) {
  checkExtension(options.output);
  const ReservedOutput reserved(options.output, {}, options.force);
  checkFramesCount(options.output, options.frames);
  SampleFrames frames(options);
  recordFrames(frames, {options.output, describe(options), options.frames}, job);
  return job.status();
}

void checkUsage(const Options& options) {
  FrameClock(kStartTime, options.framesPerSecond);  // says what is wrong with the rate
  options.rtvVersion.version(options.output);
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("output", options.output, "The recording to make, OUTPUT.img or OUTPUT.rtv")
      ->required();
  command
      .add_option("--frames", options.frames, "Number of frames, 1 to 10000000; 50 if not given")
      ->type_name("N")
      ->check(CLI::Range(1U, 10000000U).description(""));
  addParsedOption(command, "--size", "WxH", "Size in pixels, 1280x800 if not given",
                  [&options](const std::string& text) { options.size = parsePictureSize(text); });
  addFrameRateOption(
      command, [&options](double rate) { options.framesPerSecond = rate; },
      "Frames a second, 30 if not given");
  options.rtvVersion.addTo(command);
  command.add_flag("--force", options.force, "Replace an existing output");
}

}  // namespace

void addSampleCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"sample", "Draw a short drive on a country road, to have a recording to try.",
       "sample drive.img --frames 300"},
      {addOptions, drawSample, checkUsage});
}

}  // namespace velmar::tool

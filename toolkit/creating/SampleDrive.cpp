#include "toolkit/creating/SampleDrive.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "scene/SampleScene.h"
#include "toolkit/writing/RecordFrames.h"

namespace velmar::toolkit {

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

// The camera that SampleScene draws with.
std::string cameraParams(const SampleDrive& drive) {
  const std::string focalLength = std::to_string(drive.size.width * 4 / 5);
  const std::string centerX = std::to_string(drive.size.width / 2);
  const std::string centerY = std::to_string(drive.size.height * 9 / 20);
  return "{\"camera_matrix\": [[" + focalLength + ", 0, " + centerX + "], [0, " + focalLength +
         ", " + centerY + "], [0, 0, 1]], \"distortion\": [0, 0, 0, 0, 0], " +
         "\"height_above_road_mm\": 1400}";
}

RecordingDescription describe(const SampleDrive& drive) {
  RecordingDescription description;
  description.setSize(drive.size);
  description.deviceId.assign(std::begin(kDeviceId), std::end(kDeviceId));
  description.version = drive.version;
  description.undistorted = true;
  description.cameraParams = cameraParams(drive);
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
  explicit SampleFrames(const SampleDrive& drive)
      : drive_(drive),
        clock_(kStartTime, drive.framesPerSecond),
        scene_(drive.size.width, drive.size.height) {}

  std::size_t count() const override { return drive_.frames; }

  bool read(std::size_t at, NewFrame& frame) override {
    const std::uint64_t time = clock_.at(at);
    frame.jpeg = scene_.jpeg(static_cast<unsigned int>(at));
    frame.times = {time, time + kTransferTime};
    frame.tag = tagOf(motion_, drive_.framesPerSecond);
    motion_ = SampleScene::next(motion_);
    return true;
  }

 private:
  const SampleDrive& drive_;
  FrameClock clock_;
  SampleScene scene_;
  SampleScene::Motion motion_ = SampleScene::start();
};

}  // namespace

void recordSample(const SampleDrive& drive, const std::string& path, Job& job) {
  checkFramesCount(path, drive.frames);
  SampleFrames frames(drive);
  recordFrames(frames, {path, describe(drive), drive.frames}, job);
}

}  // namespace velmar::toolkit

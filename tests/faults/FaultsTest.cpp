// Recording, reading and editing while one call after the other fails.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <iostream>

#include "faults/FaultInjection.h"
#include "scene/SampleScene.h"
#include "support/TestSupport.h"
#include "velmar_logger/control.h"
#include "velmar_video/velmar_video.h"

namespace {

constexpr unsigned short kWidth = 64;
constexpr unsigned short kHeight = 48;
constexpr unsigned char kDeviceId[kRtvDeviceIdSize] = "the camera behind glass";
constexpr unsigned long kStart = 1700000000000000;
constexpr unsigned long kFrameTime = 33000;
constexpr char kFileName[] = "a recording with a rather long name";

const std::vector<std::string> kFrames = {SampleScene(kWidth, kHeight).jpeg(0),
                                          SampleScene(kWidth, kHeight).jpeg(1),
                                          SampleScene(kWidth, kHeight).jpeg(2)};
const std::string kLongJson = R"({"lens": "long enough to be kept outside of a string", "f": 4})";
const std::string kShortJson = "{}";
const can_data_io kCan = [] {
  can_data_io can{};
  can.vehicle_speed = 13.25F;
  return can;
}();

// What a reader says without a fault, in its order.
struct Expected {
  bool isLearning = false;
  std::vector<std::string> values;
} expected;

// What the library has said while a fault was on its way, and what a reader reads without one.
struct Answers {
  bool error = false;  // a code, a null pointer, a text that is missing
  bool wrong = false;  // no error, but not what is in the file either
  std::size_t values = 0;

  void add(bool success, bool right = true) {
    error |= !success;
    wrong |= success && !right;
  }
  void code(VELMAR_ERROR_CODE_E code, bool right = true) { add(code == 0, right); }
  const std::string& next(const std::string& value) {
    if (expected.isLearning) expected.values.push_back(value);
    return expected.values[values++];
  }
  void text(const std::string& text) {
    const std::string& right = next(text);
    add(!text.empty() && (text != "{}" || right == "{}"), text == right);
  }
};

// Armed code: it allocates nothing itself.

// Without `kWhole`, which is all frames and all that can be set, it is one frame.
template <bool kWhole, bool kCloses>
void record(const std::string& path, Answers& answers) {
  const auto creater = makeVelmarVideoFileCreater(path);
  answers.add(creater != nullptr);
  if (!creater) return;
  answers.code(creater->open());
  if (answers.error) return;
  if (kWhole) {
    creater->setDeviceId(kDeviceId, sizeof kDeviceId);
    creater->setStartTime(kStart);
    creater->setUndistortFlags();
    creater->setVideoResolution(kWidth, kHeight);
    creater->setCameraParams(kLongJson);
    creater->setExtendedInfo(kLongJson);
  }
  for (std::size_t i = 0; i < (kWhole ? kFrames.size() : 1); ++i) {
    answers.add(creater->addFrame(kFrames[i], kStart + i * kFrameTime, kStart));
  }
  if (kCloses) answers.code(creater->close());
}
constexpr auto recordOne = record<false, true>;
constexpr auto recordAll = record<true, true>;
constexpr auto drop = record<true, false>;

template <version_e kVersion>
void recordRtv(const std::string& path, Answers& answers) {
  RecordFileCreater creater(path, static_cast<unsigned short>(kFrames.size() + 1), kVersion,
                            nullptr);
  answers.add(creater.isOpen());
  creater.setVideoResolution(kWidth, kHeight);
  for (const std::string& frame : kFrames) {
    answers.add(creater.addFrame(7, frame, 1, 2, 3, 4, 5, 6, &kCan));
  }
  answers.add(creater.close());
}
constexpr auto recordRtv03 = recordRtv<RTV_VER_03>;
constexpr auto recordRtv04 = recordRtv<RTV_VER_04>;

void read(const std::string& path, Answers& answers) {
  // Whole, and with rows cut, which takes scratch memory.
  static std::string pictures[] = {std::string(kWidth * kHeight * 3, '\0'),
                                   std::string(kWidth * (kHeight - 8) * 3, '\0')};
  const auto reader = makeVelmarVideoFileReader(path);
  answers.add(reader != nullptr);
  if (!reader) return;
  answers.code(reader->open());
  if (answers.error) return;
  answers.text(reader->getFileName());
  answers.text(reader->getCameraParams());
  answers.text(reader->getExtendedInfo());
  answers.text(reader->getMetaInfo());
  answers.text(errorCode2String(VELMAR_ERROR_CODE_OUT_RANGE_E));
  for (unsigned int i = 0; i < kFrames.size(); ++i) {
    std::string data;
    const auto code = reader->getRawImage(i, data);
    answers.code(code, data == kFrames[i]);
  }
  // Either may be the first with a decoder that could not be made.
  for (const unsigned short cut : {8, 0, 8}) {
    std::string& picture = pictures[cut == 0 ? 0 : 1];
    auto* pixels = reinterpret_cast<unsigned char*>(picture.data());
    const auto code = reader->getImage(2, picture.size(), pixels, VELMAR_FORMAT_RGB_E,
                                       SCALE_FACTOR_1_1_E, 0, cut);
    answers.code(code, picture == answers.next(picture));
  }
  answers.code(reader->close());
}

void parse(const std::string& path, Answers& answers) {
  TaggedVideoParser parser;
  answers.add(parser.init(path.c_str()) == RTV_ERR_SUCCESS);
  if (answers.error) return;
  answers.text(parser.RecordFile::getFileName());
  can_data_io can{};
  const bool isRead = parser.getCANRecord(1, can) == RTV_ERR_SUCCESS;
  answers.add(isRead, can.vehicle_speed == kCan.vehicle_speed);
  if (isRead) answers.text(can_data_toString(&can, CAN_SIZE_IO));
  parser.dump();
}

template <const std::string& kJson>
void edit(const std::string& path, Answers& answers) {
  const auto modifier = makeVelmarVideoFileModifier(path);
  answers.add(modifier != nullptr);
  if (!modifier) return;
  unsigned long time = kStart + 5000000;
  answers.code(modifier->open());
  if (answers.error) return;
  answers.code(modifier->modifyTimestamp(0, time));
  answers.code(modifier->modifyCameraID(kDeviceId, sizeof kDeviceId));
  answers.code(modifier->modifyUndistorted(true));
  answers.code(modifier->modifyCameraParams(kJson));
  answers.code(modifier->modifyFrameIndexDataChecksum(kJson));
  answers.code(modifier->modifyExtendedInfo(kJson));
  answers.code(modifier->correctVideoResolution());
  answers.code(modifier->close());
}

// Unarmed code.

enum Traits {
  kKeepsDescriptor = 1,  // where the file cannot be mapped: part of the contract
  kTellsLogOnly = 2,
};

struct Scenario {
  const char* name;
  const char* extension;
  void (*run)(const std::string& path, Answers& answers);
  void (*prepare)(const std::string& path, Answers& answers);  // what is there before; or null
  int traits = 0;
};

enum Told { kTold, kMaybeSilent };  // where nothing is lost by it

struct Fault {
  const char* name;
  Call call;
  int error;
  Told told = kTold;
  Extent extent = Extent::Once;
};

constexpr Fault kFaults[] = {
    {"malloc", Call::Allocate, ENOMEM, kMaybeSilent},
    {"malloc from there on", Call::Allocate, ENOMEM, kMaybeSilent, Extent::FromThereOn},
    {"close", Call::Close, EIO, kMaybeSilent},
    {"fallocate", Call::Fallocate, ENOSPC},
    {"fallocate not offered", Call::Fallocate, EOPNOTSUPP, kMaybeSilent, Extent::FromThereOn},
    {"ftruncate", Call::Ftruncate, EFBIG},
    {"mmap", Call::Mmap, ENOMEM},
    {"mmap without a file", Call::Reserve, ENOMEM, kMaybeSilent},
    {"munmap", Call::Munmap, EINVAL},
    {"open", Call::Open, EMFILE},
    {"open of a folder", Call::OpenFolder, EACCES, kMaybeSilent},
    {"pwrite", Call::Pwrite, EIO},
    {"pwrite in half", Call::Pwrite, ENOSPC, kTold, Extent::HalfDone},
    {"pread", Call::Pread, EIO},
    {"rename", Call::Rename, EACCES},
    {"stat", Call::Stat, EIO, kMaybeSilent},
    {"fdatasync", Call::SyncData, EIO},
    {"fsync of a folder", Call::SyncFolder, EIO},
    {"fsync of a folder not offered", Call::SyncFolder, EINVAL, kMaybeSilent},
    {"write", Call::Write, EIO},
    {"write in half", Call::Write, ENOSPC, kTold, Extent::HalfDone},
    {"write from there on", Call::Write, ENOSPC, kTold, Extent::FromThereOn},
};

constexpr Scenario kScenarios[] = {
    {"record img", "img", recordAll, recordOne},
    {"record img, dropped", "img", drop, nullptr, kTellsLogOnly},
    {"record rtv 03", "rtv", recordAll, recordOne},
    {"record rtv 03, dropped", "rtv", drop, nullptr, kTellsLogOnly},
    {"record rtv 04", "rtv", recordRtv04, recordRtv03},
    {"read img", "img", read, recordAll},
    {"read rtv 03", "rtv", read, recordRtv03, kKeepsDescriptor},
    {"parse rtv 04", "rtv", parse, recordRtv04, kKeepsDescriptor},
    {"edit img, longer", "img", edit<kLongJson>, recordOne},
    {"edit img, shorter", "img", edit<kShortJson>, recordAll},
    {"edit rtv 03", "rtv", edit<kLongJson>, recordRtv03, kKeepsDescriptor},
    {"edit rtv 04", "rtv", edit<kLongJson>, recordRtv04, kKeepsDescriptor},
};

// All that a reader gives, in one text; "absent" without a file, "" for one that does not read to
// the end.
std::string contentOf(const std::string& path) {
  if (!exists(path)) return "absent";
  const auto reader = makeVelmarVideoFileReader(path);
  if (reader->open() != kSuccess) return "";
  const unsigned int count = got(*reader, &VelmarVideoFileReader::getFramesCount);
  unsigned short width = 0, height = 0;
  std::string id(kRtvDeviceIdSize, '\0');
  reader->getImageResolution(width, height);
  reader->getDeviceId(reinterpret_cast<unsigned char*>(id.data()), kRtvDeviceIdSize);
  std::string content = id + reader->getCameraParams() + reader->getExtendedInfo();
  for (const unsigned int number :
       {count, got(*reader, &VelmarVideoFileReader::getUndistortFlags), 0U + width, 0U + height}) {
    content += " " + std::to_string(number);
  }
  for (unsigned int i = 0; i < count; ++i) {
    std::string frame;
    unsigned long sensorTime = 0, arrivedTime = 0;
    if (reader->getRawImage(i, frame) != 0 || reader->getSensorTime(i, sensorTime) != 0 ||
        reader->getArrivedTime(i, arrivedTime) != 0 ||
        std::find(kFrames.begin(), kFrames.end(), frame) == kFrames.end()) {
      return "";
    }
    content += " " + std::to_string(sensorTime) + " " + std::to_string(arrivedTime) + frame;
  }
  return content;
}

// Open descriptors, and maps of the folder's files or without access.
struct Resources {
  long descriptors = 0, maps = 0;

  explicit Resources(const std::string& folder) {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    descriptors = std::distance(begin(entries), end(entries));
    std::ifstream lines("/proc/self/maps");
    for (std::string line; std::getline(lines, line);) {
      const bool reserved = line.find(" ---p 00000000 00:00 0") != std::string::npos;
      if (reserved || line.find(folder) != std::string::npos) ++maps;
    }
  }
};

class Faults : public testing::Test {
 protected:
  Faults() {
    velmar_logger::setSink([this](int level, const char*, const char*) { logged_ |= level >= 2; });
  }
  ~Faults() override { velmar_logger::setSink({}); }

  void prepare(const Scenario& scenario) {
    path_ = folder_ / (std::string(kFileName) + "." + scenario.extension);
    std::filesystem::remove(path_);
    answers_ = {};
    if (scenario.prepare != nullptr) scenario.prepare(path_, answers_);
    ASSERT_FALSE(answers_.error);
    before_ = exists(path_) ? readFile(path_) : "";
    expected = {true, {}};
    scenario.run(path_, answers_);
    expected.isLearning = false;
  }

  // Runs the scenario on the file that was there before; how many calls have failed.
  unsigned run(const Scenario& scenario, const Fault& fault, unsigned number) {
    for (const char* suffix : {"", ".tmp", ".tmp.index", ".tmp.index.new"}) {
      std::filesystem::remove(path_ + suffix);
    }
    if (scenario.prepare != nullptr) writeFile(path_, before_);
    answers_ = {};
    logged_ = thrown_ = false;
    arm(fault.call, number, fault.extent, fault.error);
    try {
      scenario.run(path_, answers_);
    } catch (...) {
      thrown_ = true;
    }
    return disarm();
  }

  // What does not come about is told to the caller, and any other fault at least to the log. In
  // every case the file is a whole one.
  void judge(const Scenario& scenario, const Fault& fault, const std::string& wanted) {
    // A log without memory says nothing.
    const bool isMute = fault.call == Call::Allocate;
    const bool told =
        answers_.error || ((scenario.traits & kTellsLogOnly) != 0 && (logged_ || isMute));
    EXPECT_FALSE(thrown_);
    EXPECT_FALSE(answers_.wrong);
    EXPECT_TRUE(told || logged_ || fault.told == kMaybeSilent);
    const std::string content = contentOf(path_);
    EXPECT_TRUE(told || content == wanted);
    EXPECT_NE(content, "");
    EXPECT_TRUE(content != "absent" || scenario.prepare == nullptr);
  }

  // Fails the first call, the second and so on until there are no more; how many have failed.
  unsigned failEach(const Scenario& scenario, const Fault& fault) {
    unsigned failures = 0;
    std::string wanted;
    const auto* result = testing::UnitTest::GetInstance()->current_test_info()->result();
    const int parts = result->total_part_count();
    for (unsigned number = 0; result->total_part_count() == parts; ++number) {
      SCOPED_TRACE(std::string(scenario.name) + ", " + fault.name + " " + std::to_string(number));
      const Resources before(folder_ / "");
      const unsigned failed = run(scenario, fault, number == 0 ? -1U : number);
      const Resources after(folder_ / "");
      const bool keeps =
          (scenario.traits & kKeepsDescriptor) != 0 && fault.call == Call::Mmap && failed > 0;
      EXPECT_EQ(after.descriptors, before.descriptors + (keeps ? 1 : 0));
      EXPECT_EQ(after.maps, before.maps);
      if (number == 0) {
        wanted = contentOf(path_);
        EXPECT_FALSE(answers_.error || answers_.wrong || logged_);
      } else if (failed == 0) {
        break;
      } else {
        judge(scenario, fault, wanted);
        ++failures;
      }
    }
    return failures;
  }

  TempFolder folder_;
  std::string path_;
  std::string before_;
  Answers answers_;
  bool logged_ = false;
  bool thrown_ = false;
};

TEST_F(Faults, AreToldAndLeaveWholeFiles) {
  std::vector<unsigned> total(std::size(kFaults));
  for (const Scenario& scenario : kScenarios) {
    ASSERT_NO_FATAL_FAILURE(prepare(scenario)) << scenario.name;
    unsigned injected = 0;
    for (std::size_t i = 0; i < std::size(kFaults); ++i) {
      const unsigned failures = failEach(scenario, kFaults[i]);
      total[i] += failures;
      injected += failures;
    }
    std::cout << scenario.name << ": " << injected << " faults\n";
    EXPECT_GT(injected, 0U) << scenario.name;
  }
  for (std::size_t i = 0; i < std::size(kFaults); ++i) {
    std::cout << kFaults[i].name << ": " << total[i] << "\n";
    EXPECT_GT(total[i], 0U) << kFaults[i].name;
  }
}

}  // namespace

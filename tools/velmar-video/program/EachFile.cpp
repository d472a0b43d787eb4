#include "program/EachFile.h"

#include <atomic>
#include <new>
#include <optional>
#include <utility>

#include "toolkit/base/DeferredJob.h"
#include "toolkit/base/InOrder.h"

namespace velmar::tool {

namespace {

// One alone shows its own progress, and its results as they come.
void workOnOne(const FileWork& work, CommandJob& job) {
  StandardOutput output;
  try {
    work(0, job, output);
  } catch (const OutputFailure&) {
    throw;
  } catch (const Failure& failure) {
    job.fail(failure);
  }
  output.flush();
}

// What a file has to tell, once it is its turn.
struct Result {
  bool isDone = false;  // also if that failed
  DeferredJob job;
  StandardOutput output{StandardOutput::Mode::Held};
  std::optional<Failure> failure;

  explicit Result(const std::atomic<bool>& isStopped) : job(isStopped) {}
};

}  // namespace

Failure failureOf(const std::string& file, const std::exception_ptr& thrown) {
  try {
    std::rethrow_exception(thrown);
  } catch (const OutputFailure&) {
    throw;
  } catch (const Failure& failure) {
    return failure;
  } catch (const UsageError& error) {
    // An option may be for the other container only.
    return {file, error.what(), VELMAR_ERROR_CODE_INVALID_PARAMETER_E};
  } catch (const std::bad_alloc&) {
    return {file, "there is not enough memory", VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E};
  } catch (const std::exception& error) {
    return {file, error.what(), VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E};
  }
}

void forEachFile(const std::vector<std::string>& files, unsigned int jobs, const std::string& of,
                 const FileWork& work, CommandJob& job) {
  const std::size_t count = files.size();
  if (count == 1) return workOnOne(work, job);
  std::atomic<bool> isStopped = false;
  std::size_t done = 0;
  const auto stage = job.beginFiles(std::to_string(count) + " " + of, count);
  const auto run = [&](std::size_t at) {
    auto result = std::make_unique<Result>(isStopped);
    if (isStopped) return result;
    try {
      work(at, result->job, result->output);
      result->isDone = true;
    } catch (const JobStopped&) {
      // What it has made before, such as whole scenes, is told all the same.
    } catch (...) {
      result->failure = failureOf(files[at], std::current_exception());
      result->isDone = true;
    }
    return result;
  };
  const auto take = [&](std::size_t /*at*/, std::unique_ptr<Result>& result) {
    result->output.flush();
    result->job.tell(job);
    if (result->failure) job.fail(*result->failure);
    if (result->isDone) stage->advance(++done);
    return true;
  };
  inOrder<std::unique_ptr<Result>>(count, jobs, run, take, [&] {
    stage->advance(done);
    isStopped = isStopped || stage->stopRequested();
    return true;
  });
  if (done < count) {
    job.lose(std::to_string(count) + " " + of, "stopped by a signal after " + std::to_string(done));
  }
}

}  // namespace velmar::tool

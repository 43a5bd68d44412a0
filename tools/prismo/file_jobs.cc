#include "file_jobs.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <map>
#include <mutex>
#include <thread>

#include "error.h"
#include "terminal.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

// What went wrong is about the input unless it names a file itself.
std::string RunJob(const FileJobs::Job& job, const fs::path& input, const fs::path& output,
                   FileKind kind) try {
  return job(input, output, kind);
} catch (const FileError&) {
  throw;
} catch (const std::exception& error) {
  throw FileError(input, error.what());
}

std::vector<fs::path> NamesIn(const fs::path& folder, const std::vector<std::string>& inputs, FileKind kind) {
  std::vector<fs::path> outputs;
  std::map<fs::path, std::string> taken;
  for (const std::string& input : inputs) {
    const fs::path output = folder / (fs::path(input).stem().string() + ExtensionOf(kind));
    const auto [other, is_new] = taken.emplace(output, input);
    if (!is_new) throw Error(other->second, " and ", input, " would both be written to ", output.string());
    outputs.push_back(output);
  }
  return outputs;
}

bool IsDone(const fs::path& input, const fs::path& output) {
  std::error_code error;
  const fs::file_time_type made = fs::last_write_time(output, error);
  if (error) return false;
  const fs::file_time_type wanted = fs::last_write_time(input, error);
  return !error && made >= wanted;
}

// One line on a terminal that says how far a batch is; messages go through it so that they do not mix.
class Progress {
 public:
  explicit Progress(size_t total) : total_(total), shown_(ErrorOutputIsTerminal()) {}
  ~Progress() { Clear(); }

  void Finished(const std::string& line) {
    const std::lock_guard lock(mutex_);
    Clear();
    std::cout << line << std::endl;
    Advance();
  }

  void Failed(const std::string& message) {
    const std::lock_guard lock(mutex_);
    Clear();
    std::cerr << "prismo: " << message << std::endl;
    ++failed_;
    Advance();
  }

  size_t failed() const { return failed_; }

 private:
  void Clear() {
    if (shown_) std::cerr << "\r\033[K" << std::flush;
  }
  void Advance() {
    ++done_;
    if (shown_ && done_ < total_) std::cerr << done_ << " of " << total_ << " files" << std::flush;
  }

  std::mutex mutex_;
  size_t total_, done_ = 0, failed_ = 0;
  bool shown_;
};

}  // namespace

bool FileJobs::ToFolder() const {
  std::error_code ignored;
  return inputs.size() > 1 || fs::is_directory(output, ignored) || output.ends_with('/') ||
         output.ends_with('\\');
}

void FileJobs::Run(FileKind default_kind, int parallel, const Job& job) const {
  ProtectInputs(inputs);
  if (ToFolder()) return RunInFolder(default_kind, parallel, job);
  if (skip_existing && IsDone(inputs.front(), output)) {
    std::cout << output << ": is there already\n";
    return;
  }
  const std::string line = RunJob(job, inputs.front(), output, KindOfOutput(output, kind_name));
  (IsStandardOutput(output) ? std::cerr : std::cout) << line << '\n';
}

void FileJobs::RunInFolder(FileKind default_kind, int parallel, const Job& job) const {
  const FileKind kind = kind_name.empty() ? default_kind : KindOfOutput({}, kind_name);
  const OutputFolder folder(output);
  const std::vector<fs::path> outputs = NamesIn(output, inputs, kind);
  std::vector<size_t> todo;
  for (size_t i = 0; i < inputs.size(); ++i) {
    if (!skip_existing || !IsDone(inputs[i], outputs[i])) todo.push_back(i);
  }
  if (todo.size() < inputs.size()) {
    std::cout << inputs.size() - todo.size() << " of " << inputs.size() << " files are there already\n";
  }
  const auto start = std::chrono::steady_clock::now();
  Progress progress(todo.size());
  std::atomic<size_t> next = 0;
  const auto work = [&] {
    for (size_t at = next++; at < todo.size(); at = next++) {
      const size_t i = todo[at];
      try {
        progress.Finished(RunJob(job, inputs[i], outputs[i], kind));
      } catch (const Error& failure) {
        progress.Failed(failure.what());
      }
    }
  };
  std::vector<std::thread> threads;
  for (int i = 1; i < std::min<int>(parallel, static_cast<int>(todo.size())); ++i) threads.emplace_back(work);
  work();
  for (std::thread& thread : threads) thread.join();

  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  const size_t written = todo.size() - progress.failed();
  std::cout << written << " of " << todo.size() << " files written in " << std::fixed << std::setprecision(2)
            << seconds.count() << " s\n";
  if (progress.failed()) throw Error(progress.failed(), " of ", todo.size(), " files failed");
}

}  // namespace prismo::tool

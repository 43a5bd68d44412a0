#include "measure.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include "PrismoUtl.h"
#include "memory_limit.h"

namespace prismo::bench {
namespace {

// A row made ready: a frame to convert and the memory for its result.
class Stage {
 public:
  Stage(const Row& row, const Conditions& conditions)
      : row_(row),
        conversion_(*row.conversion),
        size_(conversion_.SizeFor(row.size)),
        memory_(conversion_.SourceBytes(size_), conversion_.TargetPitch(size_) * size_.height,
                conditions.misalignment),
        job_{size_,
             memory_.Source(),
             conversion_.SourceBytes(size_),
             memory_.Target(),
             conversion_.TargetPitch(size_) * size_.height,
             conversion_.TargetPitch(size_),
             conditions.file},
        peers_(conditions.peers) {
    if (!GetLUTReady()) PrepareLUT();
    if (conversion_.source_format != 0) DrawFrame(conversion_.source_format, size_, memory_.Source());
    if (row.workers > 0) {
      TerminateMPThreads();
      SetMPTimeout_msec(60'000);
      StartMPThreads(row.workers);
    }
    if (conversion_.prepare) conversion_.prepare(job_);
    RunOnce();
  }

  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  const Job& job() const { return job_; }

  void RunOnce() const {
    const uint32_t status = conversion_.run(job_);
    if (status != UTL_STS_SUCCESS) {
      throw std::runtime_error(row_.Name() + " failed with status " + std::to_string(status));
    }
  }

  double BytesMoved() const {
    const auto file_bytes = conversion_.writes_file ? std::filesystem::file_size(job_.path) : 0;
    return static_cast<double>(job_.source_bytes + job_.target_bytes + file_bytes);
  }

  std::vector<Contestant> Ours() const {
    std::vector<Contestant> ours{{Role::kOurs, "PrismoUtl", [this] { conversion_.run(job_); }}};
    if (conversion_.rested)
      ours.front().before = [] { std::this_thread::sleep_for(std::chrono::milliseconds(2)); };
    const Conversion* const caller = row_.workers > 0 ? CallerFormOf(conversion_) : nullptr;
    if (caller) ours.push_back({Role::kCaller, "caller", [this, caller] { caller->run(job_); }});
    return ours;
  }

  std::vector<Contestant> Peers() const {
    std::vector<Contestant> peers;
    for (const PeerLibrary& library : peers_) {
      Step run = library.make(conversion_.name, job_, row_.workers > 0 ? row_.workers : 1);
      if (run) peers.push_back({Role::kPeer, library.name, std::move(run)});
    }
    return peers;
  }

  std::vector<Contestant> Floors() const {
    std::vector<Contestant> floors;
    if (conversion_.floor) {
      floors.push_back({Role::kLimit, conversion_.floor_name, [this] { conversion_.floor(job_); }});
    } else if (job_.target_bytes > 0) {
      for (const Limit& limit : Limits()) {
        floors.push_back({Role::kLimit, limit.name, [this, move = limit.move] {
                            move({job_.source, job_.source_bytes}, {job_.target, job_.target_bytes});
                          }});
      }
    }
    return floors;
  }

 private:
  const Row& row_;
  const Conversion& conversion_;
  Size size_;
  Memory memory_;
  Job job_;
  std::span<const PeerLibrary> peers_;
};

std::string SizeName(Size size) { return std::to_string(size.width) + 'x' + std::to_string(size.height); }

}  // namespace

std::string Row::Name() const {
  const std::string threads = workers > 0 ? "pool" + std::to_string(workers) : "caller";
  return conversion->name + '/' + threads + '/' + SizeName(size);
}

std::vector<Row> RowsOf(std::span<const Size> sizes) {
  std::vector<Row> rows;
  for (const Size size : sizes) {
    for (const Conversion& conversion : Conversions()) {
      if (conversion.on == On::kCaller) {
        rows.push_back({&conversion, 0, size});
        continue;
      }
      if (std::thread::hardware_concurrency() > 1) rows.push_back({&conversion, 2, size});
      rows.push_back({&conversion, 1, size});
    }
  }
  return rows;
}

Result Measure(const Row& row, const Conditions& conditions) {
  const Stage stage(row, conditions);
  Result result{row.Name()};
  result.pixels = static_cast<double>(stage.job().source_bytes > 0 ? stage.job().size.Pixels() : 0);
  result.bytes = stage.BytesMoved();

  std::vector<Contestant> contestants = stage.Ours();
  for (Contestant& floor : stage.Floors()) contestants.push_back(std::move(floor));
  for (Contestant& peer : stage.Peers()) contestants.push_back(std::move(peer));
  Race(contestants, conditions.plan);

  const Contestant& ours = contestants.front();
  result.seconds = ours.Median();
  if (const Contestant* const limit = FastestOf(contestants, Role::kLimit)) {
    const Ratio ratio = RatioOf(ours, *limit);
    result.limit = limit->name;
    result.over_limit = ratio.median;
    result.over_limit_low = ratio.low;
    result.over_limit_high = ratio.high;
  }
  if (const Contestant* const peer = FastestOf(contestants, Role::kPeer)) {
    result.peer = peer->name;
    result.faster_than_peer = RatioOf(*peer, ours).median;
  }
  if (const Contestant* const caller = FastestOf(contestants, Role::kCaller)) {
    result.faster_than_caller = RatioOf(*caller, ours).median;
  }
  for (const Contestant& contestant : contestants) {
    if (contestant.name == "memcpy") result.over_memcpy = RatioOf(ours, contestant).median;
    result.all_seconds.emplace_back(contestant.name, contestant.Median());
  }
  return result;
}

std::vector<Difference> ComparePeers(const Row& row, const Conditions& conditions) {
  const Stage stage(row, conditions);
  const Job& job = stage.job();
  const std::vector<uint8_t> ours(job.target, job.target + job.target_bytes);
  std::vector<Difference> differences;
  for (const Contestant& peer : stage.Peers()) {
    peer.run();
    uint64_t sum = 0;
    for (size_t i = 0; i < ours.size(); ++i) sum += static_cast<uint64_t>(std::abs(ours[i] - job.target[i]));
    differences.push_back({peer.name, static_cast<double>(sum) / static_cast<double>(ours.size())});
  }
  return differences;
}

}  // namespace prismo::bench

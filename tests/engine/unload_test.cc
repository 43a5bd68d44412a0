// The shared library is loaded and unloaded with works on its pool.
#include <dlfcn.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <type_traits>

#include <gtest/gtest.h>

#include "PrismoUtl.h"
#include "engine/threads.h"

namespace prismo::mp {
namespace {

class Library {
 public:
  Library() : handle_(dlopen(PRISMO_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL)) {}
  ~Library() {
    if (handle_) dlclose(handle_);
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  explicit operator bool() const { return handle_ != nullptr; }

  template <class Function>
  std::remove_reference_t<Function>* Find(Function&&, const char* name) const {
    return reinterpret_cast<std::remove_reference_t<Function>*>(dlsym(handle_, name));
  }

  // Whether some copy of it is in memory.
  static bool IsLoaded() {
    void* loaded = dlopen(PRISMO_LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD);
    if (loaded) dlclose(loaded);
    return loaded != nullptr;
  }

 private:
  void* handle_;
};

decltype(&MPWorkTakeBlock) take_block;
std::atomic<int32_t> rows_done;
std::atomic<int32_t> block_ms;

void SlowWork(MPWork* work) {
  int32_t first_row, row_count;
  for (int32_t first = 1; take_block(work, first, &first_row, &row_count); first = 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(block_ms));
    rows_done += row_count;
  }
}

TEST(Unload, EndsThePoolWithWhateverItIsAt) {
  for (int32_t round = 0; round < 30; ++round) {
    {
      const Library library;
      ASSERT_TRUE(library) << dlerror();
      take_block = library.Find(MPWorkTakeBlock, "MPWorkTakeBlock");
      const auto exec = library.Find(ExecWork2, "ExecWork2");
      const auto start = library.Find(StartWork, "StartWork");
      const auto set_timeout = library.Find(SetMPTimeout_msec, "SetMPTimeout_msec");
      block_ms = 0;
      rows_done = 0;
      ASSERT_EQ(exec(&SlowWork, 0, 99, nullptr, 16, 100, 1, 16, nullptr, 0, 0, 1), 0u);
      EXPECT_EQ(rows_done, 100);

      // One work given up while it runs, the rest running and queued; in every third round none is waited
      // for.
      block_ms = round % 3;
      if (round % 3 != 0) {
        set_timeout(1);
        exec(&SlowWork, 0, 99, nullptr, 16, 100, 1, 16, nullptr, 0, 0, 1);
      }
      for (int32_t i = 0; i < round % 5; ++i) {
        MPWork* work = nullptr;
        ASSERT_EQ(start(&work, &SlowWork, 0, 99, 0, 15, 0, 0, nullptr, 16, 100, 1, 16, nullptr, 16, 100, 1,
                        16, 0, 0, 1),
                  0u);
      }
    }
    ASSERT_FALSE(Library::IsLoaded());
    ASSERT_TRUE(WorkerThreadsAre(0));
  }
}

TEST(Unload, RightAfterTheFirstThreadWasMade) {
  for (int32_t round = 0; round < 100; ++round) {
    {
      const Library library;
      ASSERT_TRUE(library) << dlerror();
      library.Find(SetMPCount, "SetMPCount")(2);
    }
    ASSERT_FALSE(Library::IsLoaded());
  }
}

}  // namespace
}  // namespace prismo::mp

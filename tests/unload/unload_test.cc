// Loading and unloading the library in a process that goes on.
#include <gtest/gtest.h>
#include <windows.h>

#include <tlhelp32.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "PrismoUtl.h"

namespace prismo::test {
namespace {

constexpr char kLibrary[] = "PrismoUtl64.dll";
constexpr uint32_t kWidth = 64;
constexpr uint32_t kHeight = 48;

class Library {
 public:
  Library() : module_(LoadLibraryA(kLibrary)) { EXPECT_NE(module_, nullptr) << GetLastError(); }
  ~Library() {
    EXPECT_TRUE(FreeLibrary(module_));
    EXPECT_EQ(GetModuleHandleA(kLibrary), nullptr) << "the library is still there";
  }

  template <class Function>
  Function* Get(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
  }

 private:
  HMODULE module_;
};

#define PRISMO_GET(library, name) (library).Get<std::remove_pointer_t<decltype(&name)>>(#name)

size_t ThreadsOfThisProcess() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof(entry);
  size_t threads = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
    threads += entry.th32OwnerProcessID == GetCurrentProcessId();
  }
  CloseHandle(snapshot);
  return threads;
}

// Threads that the library has left end as soon as the loader lets them.
size_t ThreadsAfterAWhile(size_t expected) {
  for (int i = 0; i < 200 && ThreadsOfThisProcess() > expected; ++i) Sleep(10);
  return ThreadsOfThisProcess();
}

void ConvertOnPool(const Library& library) {
  const std::vector<uint8_t> frame(kWidth * kHeight, 100);
  std::vector<uint8_t> picture(4 * kWidth * kHeight);
  ASSERT_EQ(PRISMO_GET(library, ByrRG8ToBGRA_MP)(picture.data(), frame.data(), kWidth, kHeight), 0u);
  for (size_t i = 0; i < picture.size(); ++i) ASSERT_EQ(picture[i], i % 4 == 3 ? 255 : 100) << "byte " << i;
}

TEST(Unload, NeverUsed) {
  for (int i = 0; i < 20; ++i) const Library library;
}

TEST(Unload, AfterConversions) {
  const size_t before = ThreadsOfThisProcess();
  for (int i = 0; i < 30; ++i) {
    const Library library;
    ConvertOnPool(library);
    if (HasFailure()) return;
  }
  EXPECT_LE(ThreadsAfterAWhile(before), before);
}

TEST(Unload, AfterTerminatingThePool) {
  for (int i = 0; i < 10; ++i) {
    const Library library;
    ConvertOnPool(library);
    EXPECT_EQ(PRISMO_GET(library, TerminateMPThreads)(), 0u);
  }
}

TEST(Unload, RightAfterStartingThreads) {
  const size_t before = ThreadsOfThisProcess();
  for (int i = 0; i < 30; ++i) {
    const Library library;
    EXPECT_EQ(PRISMO_GET(library, StartMPThreads)(16), 0u);
  }
  EXPECT_LE(ThreadsAfterAWhile(before), before);
}

// Functions of the system's loader that it has no header for.
template <class Function>
Function* OfLoader(const char* name) {
  const HMODULE system = GetModuleHandleA("ntdll.dll");
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(system, name)));
}

// Holds the lock under which the system loads libraries and lets threads begin.
class LoaderLock {
 public:
  LoaderLock() {
    OfLoader<LONG NTAPI(ULONG flags, ULONG * result, ULONG_PTR * cookie)>("LdrLockLoaderLock")(0, nullptr,
                                                                                               &cookie_);
  }
  ~LoaderLock() { OfLoader<LONG NTAPI(ULONG flags, ULONG_PTR cookie)>("LdrUnlockLoaderLock")(0, cookie_); }

 private:
  ULONG_PTR cookie_ = 0;
};

TEST(Unload, WithThreadsThatCouldNotBegin) {
  const size_t before = ThreadsOfThisProcess();
  {
    const LoaderLock lock;
    const Library library;
    EXPECT_EQ(PRISMO_GET(library, StartMPThreads)(16), 0u);
    EXPECT_GT(ThreadsOfThisProcess(), before);
  }
  EXPECT_LE(ThreadsAfterAWhile(before), before);
}

decltype(&MPWorkTakeBlock) take_block;
LONG blocks;

void Slow(MPWork* work) {
  int32_t first_row, row_count;
  for (int32_t first = 1; take_block(work, first, &first_row, &row_count); first = 0) {
    InterlockedIncrement(&blocks);
    Sleep(20);
  }
}

TEST(Unload, WithWorkPending) {
  const size_t before = ThreadsOfThisProcess();
  for (int i = 0; i < 10; ++i) {
    const Library library;
    take_block = PRISMO_GET(library, MPWorkTakeBlock);
    InterlockedExchange(&blocks, 0);
    std::vector<uint8_t> image(kWidth * kHeight);
    for (int works = 0; works < 2; ++works) {
      MPWork* work = nullptr;
      ASSERT_EQ(PRISMO_GET(library, StartWork)(&work, &Slow, 0, 5, 0, kWidth - 1, 0, 0, image.data(), kWidth,
                                               kHeight, 1, kWidth, image.data(), kWidth, kHeight, 1, kWidth,
                                               0, 1, 0),
                0u);
    }
    while (InterlockedCompareExchange(&blocks, 0, 0) == 0) Sleep(1);
  }
  EXPECT_LE(ThreadsAfterAWhile(before), before);
}

}  // namespace
}  // namespace prismo::test

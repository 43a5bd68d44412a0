#include "platform/win32/module.h"

#include <atomic>

#include "platform/module.h"

namespace prismo::platform {
namespace {

constinit HMODULE module{};
constinit std::atomic<Unload> unload{Unload::kNo};

}  // namespace

HMODULE Module() noexcept { return module ? module : GetModuleHandleA(nullptr); }

Unload UnloadState() noexcept { return unload.load(std::memory_order_relaxed); }

}  // namespace prismo::platform

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID process_ends) {
  using namespace prismo::platform;
  if (reason == DLL_PROCESS_ATTACH) {
    module = instance;
    DisableThreadLibraryCalls(instance);
  } else if (reason == DLL_PROCESS_DETACH) {
    unload.store(process_ends ? Unload::kWithProcess : Unload::kAlone, std::memory_order_relaxed);
    AtUnload();
  }
  return TRUE;
}

// An environment variable that a test changes and puts back.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace prismo::test {

class ScopedEnvironment {
 public:
  // No value: the variable is unset.
  ScopedEnvironment(const char* name, const std::optional<std::string>& value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    Set(value);
  }
  ~ScopedEnvironment() { Set(old_); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  void Set(const std::optional<std::string>& value) const {
#ifdef _WIN32
    _putenv_s(name_, value.value_or("").c_str());
#else
    if (value) {
      setenv(name_, value->c_str(), 1);
    } else {
      unsetenv(name_);
    }
#endif
  }

  const char* name_;
  std::optional<std::string> old_;
};

}  // namespace prismo::test

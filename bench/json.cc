#include "json.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <utility>

namespace prismo::bench {
namespace {

class Parser {
 public:
  explicit Parser(std::string_view text) : rest_(text), length_(text.size()) {}

  Json Document() {
    Json value = Value(0);
    SkipSpace();
    Require(rest_.empty());
    return value;
  }

 private:
  static constexpr int kDeepest = 16;

  void Require(bool good) const {
    if (!good) throw std::invalid_argument("no JSON from byte " + std::to_string(length_ - rest_.size()));
  }

  void SkipSpace() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size())); }

  bool Take(std::string_view word) {
    SkipSpace();
    const bool there = rest_.starts_with(word);
    if (there) rest_.remove_prefix(word.size());
    return there;
  }

  Json Value(int depth) {
    Require(depth < kDeepest);
    Json value;
    if (Take("{")) {
      TakeMembers("}", [&] {
        SkipSpace();
        std::string name = String();
        Require(Take(":"));
        value.members.push_back(Value(depth + 1));
        value.members.back().name = std::move(name);
      });
    } else if (Take("[")) {
      TakeMembers("]", [&] { value.members.push_back(Value(depth + 1)); });
    } else if (rest_.starts_with('"')) {
      value.text = String();
    } else if (!Take("true") && !Take("false") && !Take("null")) {
      value.number = Number();
    }
    return value;
  }

  template <class TakeMember>
  void TakeMembers(std::string_view end, const TakeMember& take_member) {
    if (Take(end)) return;
    do take_member();
    while (Take(","));
    Require(Take(end));
  }

  std::string String() {
    Require(rest_.starts_with('"'));
    std::string text;
    for (rest_.remove_prefix(1); !rest_.starts_with('"'); rest_.remove_prefix(1)) {
      Require(!rest_.empty());
      char c = rest_.front();
      if (c == '\\') {
        rest_.remove_prefix(1);
        Require(!rest_.empty());
        c = rest_.front();
        if (c == 'u') {
          Require(rest_.size() > 4);
          rest_.remove_prefix(4);
          c = '?';
        }
      }
      text += c;
    }
    rest_.remove_prefix(1);
    return text;
  }

  double Number() {
    double number = 0;
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
    Require(error == std::errc());
    rest_.remove_prefix(static_cast<size_t>(end - rest_.data()));
    return number;
  }

  std::string_view rest_;
  size_t length_;
};

}  // namespace

const Json& Json::operator[](std::string_view member) const {
  static const Json kNone;
  const auto found = std::ranges::find(members, member, &Json::name);
  return found == members.end() ? kNone : *found;
}

Json ParseJson(std::string_view text) { return Parser(text).Document(); }

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
  }
  return quoted + '"';
}

}  // namespace prismo::bench

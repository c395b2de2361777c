#pragma once

// What has come of proving a description, and how the compiler tells it.

#include "payload/record.hpp"

#include <array>
#include <optional>
#include <string_view>

// That the text of a static_assert is computed belongs to C++26; these compilers know it in C++20,
// too. Others print the line of the sentence.
#if defined(__clang__) ? __clang_major__ >= 18 : __GNUC__ >= 14
#define MARLUNE_COMPUTED_TEXT 1
#endif

namespace marlune::tables::invariants {

constexpr void require(bool holds, const char *sentence) {
  if (!holds) {
    throw sentence;
  }
}

// Where in a table a rule is broken.
struct Place {
  std::string_view column{}; // none: the rule is about the whole table
  std::optional<Label> label{};
  int age = -1; // none: the rule is about all ages
};

// Text that the compiler computes and prints.
class Message {
public:
  [[nodiscard]] constexpr const char *data() const { return characters_.data(); }
  [[nodiscard]] constexpr std::size_t size() const { return size_; }

  constexpr void add(std::string_view text) {
    for (const char character : text) {
      characters_[size_] = character;
      ++size_;
    }
  }
  constexpr void add(int number) {
    constexpr std::string_view digits = "0123456789";
    int power = 1;
    while (number / 10 >= power) {
      power *= 10;
    }
    for (; power > 0; power /= 10) {
      add(digits.substr(static_cast<std::size_t>(number / power % 10), 1));
    }
  }

private:
  std::array<char, 200> characters_{};
  std::size_t size_ = 0;
};

// What has come of proving a table: the first rule that it breaks.
class Proof {
public:
  [[nodiscard]] constexpr bool holds() const { return broken_ == nullptr; }
  [[nodiscard]] constexpr const char *broken() const { return broken_; }

  // Whether the rule holds, for rules that others build on.
  constexpr bool require(bool holds, const char *sentence, const Place &place = {}) {
    if (!holds && broken_ == nullptr) {
      broken_ = sentence;
      place_ = place;
    }
    return holds;
  }

  // "a rate stands out ...: mi_f, 2021, age 65"
  [[nodiscard]] constexpr Message message() const {
    Message message;
    if (holds()) {
      return message;
    }
    message.add(broken_);
    if (!place_.column.empty()) {
      message.add(": ");
      message.add(place_.column);
    }
    if (place_.label && place_.label->ultimate) {
      message.add(", ult");
    } else if (place_.label) {
      constexpr int first_year = 1000;
      message.add(place_.label->number < first_year ? ", duration " : ", ");
      message.add(place_.label->number);
    }
    if (place_.age >= 0) {
      message.add(", age ");
      message.add(place_.age);
    }
    return message;
  }

private:
  const char *broken_ = nullptr;
  Place place_{};
};

} // namespace marlune::tables::invariants

namespace marlune::tables {

// `invariants::prove` says what is proved of such a description.
template <class Description> constexpr invariants::Proof proof_of(const Description &description) {
  invariants::Proof proof;
  prove(proof, description);
  return proof;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpragmas"
#pragma GCC diagnostic ignored "-Wunknown-warning-option"
#pragma GCC diagnostic ignored "-Wc++26-extensions"
template <const auto &description> consteval bool proved() {
  constexpr invariants::Proof proof = proof_of(description);
#ifdef MARLUNE_COMPUTED_TEXT
  static_assert(proof.holds(), proof.message());
#else
  invariants::require(proof.holds(), proof.broken());
#endif
  return true;
}
#pragma GCC diagnostic pop

} // namespace marlune::tables

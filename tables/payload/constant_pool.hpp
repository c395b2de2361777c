#pragma once

// The pool of constants, as the compiler collects it.

#include "payload/bounded.hpp"
#include "payload/plans.hpp"

#include <bit>
#include <cstdint>
#include <string_view>

namespace marlune::tables {

namespace detail {

inline constexpr std::uint64_t multiplier = 0x9E37'79B9'7F4A'7C15U; // mixes all bits

constexpr std::uint64_t hash(int value) { return static_cast<std::uint64_t>(value) * multiplier; }
constexpr std::uint64_t hash(std::string_view text) {
  std::uint64_t bits = text.size();
  for (const char letter : text.substr(0, 24)) {
    bits = (bits + static_cast<unsigned char>(letter)) * multiplier;
  }
  return bits;
}

} // namespace detail

// Distinct values of one kind, in the order of their first use: what the import makes one after the
// other it also reads one after the other. `First` is the index of the first. Open addressing.
template <class T, std::size_t Room, std::size_t First> class Distinct {
public:
  constexpr Index add(const T &value, std::uint64_t hash) {
    auto place = static_cast<std::size_t>(hash >> (64U - bits));
    const T *const items = items_.begin();
    while (table_[place] != 0 && items[table_[place] - First] != value) {
      place = (place + 1) & (places - 1);
    }
    if (table_[place] == 0) {
      table_[place] = index_of(First + items_.size());
      items_.push_back(value);
    }
    return table_[place];
  }

  [[nodiscard]] constexpr const auto &items() const { return items_; }

private:
  static constexpr unsigned bits = std::bit_width(2 * Room);
  static constexpr std::size_t places = std::size_t{1} << bits;

  static_assert(First > 0, "0 marks an empty place of the table");
  Bounded<T, Room> items_;
  Index table_[places]{};
};

struct ConstantPool {
  Distinct<int, room::ints, constant::first_int> ints;
  Distinct<std::string_view, room::texts, constant::first_text> texts;
  Distinct<std::uint64_t, room::floats, constant::first_float> floats; // by their bits

  constexpr Index add(int value) { return ints.add(value, detail::hash(value)); }
  constexpr Index add(std::string_view text) { return texts.add(text, detail::hash(text)); }
  constexpr Index add(double value) {
    const auto value_bits = std::bit_cast<std::uint64_t>(value);
    return floats.add(value_bits, value_bits * detail::multiplier);
  }
};

} // namespace marlune::tables

#pragma once

// Plans: what the compiler makes of descriptions and the import makes objects from. Every distinct
// number and text of all descriptions stands once in a pool of constants; the plan of a list, column
// or payload is a few indices. So the import lets all the slots that hold a constant share one
// object, without a lookup.

#include "payload/record.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace marlune::tables {

using Index = std::uint16_t;

// Every narrowing to an index goes through here: what grows does not wrap.
constexpr Index index_of(std::size_t number) {
  if (number > std::numeric_limits<Index>::max()) {
    throw "more constants, slots or plans than an Index can count: make it wider";
  }
  return static_cast<Index>(number);
}

// What the compiler has room for while it reads descriptions; the binary holds what there is.
namespace room {
inline constexpr std::size_t tables = 100;
inline constexpr std::size_t ints = 125;
inline constexpr std::size_t texts = 4 * tables;
inline constexpr std::size_t floats = 160 * tables;
inline constexpr std::size_t slots = 400 * tables;
inline constexpr std::size_t lists = 6 * tables;
inline constexpr std::size_t columns = 3 * tables;
inline constexpr std::size_t fields = 13 * tables;
inline constexpr std::size_t ages = 201; // of one list
} // namespace room

// The index of a constant. Every kind has a range of its own, so that an index is final when its
// constant is first met: None, False and True, then the ints, the texts and the floats.
namespace constant {
inline constexpr Index none = 0;
constexpr Index flag(bool value) { return value ? 2 : 1; }
inline constexpr std::size_t first_int = 3;
inline constexpr std::size_t first_text = first_int + room::ints;
inline constexpr std::size_t first_float = first_text + room::texts;
} // namespace constant

// One text: the next `length` bytes of all texts, UTF-8.
struct TextPlan {
  enum class Charset : std::uint8_t {
    identifier, // ASCII letters, digits and underscores alone: interned
    ascii,
    other,
  };

  Index length = 0;
  Charset charset = Charset::other;
};

// One list: the range of slots that hold the constants of its entries, floats all of them but perhaps
// the last. A list that is computed from a base vector has what its rule needs besides, for an import
// at which the vector is no longer what the compiler computed from.
struct ListPlan {
  Rates::Origin origin = Rates::Origin::literal;
  Index first = 0;
  Index length = 0;
  Index base = 0;       // constant: the base vector's name
  Index base_first = 0; // slot: where the vector's own range of this length begins
  Index factor = 0;     // constant
  Index closing = 0;    // constant: 1.0 of rates scaled below it, 0.0 of proportional ones
};

struct EntryPlan {
  Index label = 0; // constant
  Index list = 0;
};

struct ColumnPlan {
  Index key = 0; // constant
  Shape shape = Shape::flat;
  Index first_entry = 0;
  Index entries = 0;
};

struct FieldPlan {
  Index key = 0;   // constant
  Index value = 0; // constant
};

struct PayloadPlan {
  Index first_field = 0;
  Index fields = 0;
  Index first_column = 0;
  Index columns = 0;
  Index data_key = 0; // constant: "data"
  // ConstantPool: where "data" comes from when the payload has no columns of its own.
  Index source_attribute = 0;
  Index source_key = 0;
};

// All of them.
struct Plans {
  std::span<const int> ints;
  std::span<const char> text_bytes;
  std::span<const TextPlan> texts;
  std::span<const double> floats;
  std::span<const Index> slots;
  std::span<const ListPlan> lists;
  std::span<const EntryPlan> entries;
  std::span<const ColumnPlan> columns;
  std::span<const FieldPlan> fields;
  std::span<const PayloadPlan> payloads;
};

} // namespace marlune::tables

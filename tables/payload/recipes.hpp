#pragma once

// From descriptions to recipes, at compile time. Every distinct number and text of all descriptions
// becomes one constant; every list, column and payload becomes a few indices into the constants.
// The import then needs no lookup to let all the slots that hold a literal share one object.

#include "payload/record.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace marlune::tables {

using Index = std::uint16_t;

// The distinct literals, each in the order of its first use: what the import makes one after the
// other it also reads one after the other.
class DistinctLiterals {
  template <class T, std::size_t Room>
  static constexpr Index index(std::size_t first, const Bounded<T, Room> &values, const T &value) {
    const auto *const found = std::ranges::find(values, value);
    return found == values.end()
               ? throw "a constant that no description holds"
               : static_cast<Index>(first + static_cast<std::size_t>(found - values.begin()));
  }

public:
  constexpr void add(double value) {
    Index &slot = table_[slot_of(value)];
    if (slot == 0) {
      floats.push_back(value);
      slot = static_cast<Index>(floats.size());
    }
  }
  constexpr void add(int value) {
    if (std::ranges::find(ints, value) == ints.end()) {
      ints.push_back(value);
    }
  }
  constexpr void add(std::string_view text) {
    if (std::ranges::find(texts, text) == texts.end()) {
      texts.push_back(text);
    }
  }

  // The index of the object: floats first, then ints, texts, and last None, False and True.
  [[nodiscard]] constexpr Index of(double value) const {
    const Index slot = table_[slot_of(value)];
    return slot == 0 ? throw "a float that no description holds" : static_cast<Index>(slot - 1);
  }
  [[nodiscard]] constexpr Index of(int value) const { return index(floats.size(), ints, value); }
  [[nodiscard]] constexpr Index of(std::string_view text) const {
    return index(floats.size() + ints.size(), texts, text);
  }
  [[nodiscard]] constexpr Index of(Number number) const {
    return number.integer ? of(static_cast<int>(number.value)) : of(number.value);
  }
  [[nodiscard]] constexpr Index none() const {
    return static_cast<Index>(floats.size() + ints.size() + texts.size());
  }
  [[nodiscard]] constexpr Index of_flag(bool flag) const {
    return static_cast<Index>(none() + (flag ? 2 : 1));
  }
  [[nodiscard]] constexpr std::size_t objects() const { return std::size_t{none()} + 3; }

  Bounded<double, 10'000> floats;
  Bounded<int, 100> ints;
  Bounded<std::string_view, 400> texts;

private:
  // Open addressing over the bit patterns, so that 0.0 and -0.0 would stay apart.
  [[nodiscard]] constexpr std::size_t slot_of(double value) const {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    std::size_t slot = (bits * 0x9E37'79B9'7F4A'7C15U) >> 50U;
    while (table_[slot] != 0 && std::bit_cast<std::uint64_t>(floats[table_[slot] - 1U]) != bits) {
      slot = (slot + 1) % table_.size();
    }
    return slot;
  }

  std::array<Index, std::size_t{1} << 14U> table_{};
};

// One list. For literals `first` and `length` are a range of slots, the constant of every entry;
// for levels a range of slots too, pairs of a constant and a number of ages; for lists computed
// from a base vector `length` is the vector's.
struct ListRecipe {
  Rates::Origin origin = Rates::Origin::literal;
  Index first = 0;
  Index length = 0;
  Index base = 0;    // constant: the base vector's name
  Index factor = 0;  // constant
  Index closing = 0; // constant: 1.0 of capped rates, 0.0 of proportional ones
};

struct EntryRecipe {
  Index label = 0; // constant
  Index list = 0;
};

struct ColumnRecipe {
  Index key = 0; // constant
  Shape shape = Shape::flat;
  Index first_entry = 0;
  Index entries = 0;
};

struct FieldRecipe {
  Index key = 0;   // constant
  Index value = 0; // constant
};

struct PayloadRecipe {
  Index first_field = 0;
  Index fields = 0;
  Index first_column = 0;
  Index columns = 0;
  Index data_key = 0; // constant: "data"
  // Constants: where "data" comes from when the payload has no columns of its own.
  Index source_attribute = 0;
  Index source_key = 0;
};

// A literal column and the list made from it.
struct Page {
  Literals literals;
  Index list = 0;
};

// Collects the constants of descriptions, then resolves the descriptions against them.
class Cookbook {
public:
  DistinctLiterals constants;
  Bounded<Index, 24'000> slots;
  Bounded<ListRecipe, 600> lists;
  Bounded<EntryRecipe, 600> entries;
  Bounded<ColumnRecipe, 300> columns;
  Bounded<FieldRecipe, 1'000> fields;
  Bounded<PayloadRecipe, 100> payloads;
  Bounded<Page, 300> pages;

  constexpr void collect(Literals literals) {
    for (const Number &number : literals) {
      collect(number);
    }
  }

  constexpr void collect(const Payload &table) {
    constants.add(table.attribute);
    for (const Key key : table.order) {
      constants.add(text_of(key));
    }
    constants.add(table.table_name);
    constants.add(text_of(table.table_type));
    if (table.base_year) {
      constants.add(*table.base_year);
    }
    if (table.formula) {
      constants.add(text_of(*table.formula));
    }
    if (table.select_period) {
      constants.add(*table.select_period);
    }
    for (const int number : {static_cast<int>(table.unit), 1, table.omega, table.start_age}) {
      constants.add(number);
    }
    constants.add(table.description);
    constants.add(data_key);
    if (table.data_source) {
      constants.add(table.data_source->attribute);
      constants.add(table.data_source->key);
    }
    for (const Column &column : table.data) {
      constants.add(column.key);
      for (const Entry &entry : column.entries) {
        if (entry.label.ultimate) {
          constants.add(std::string_view("ult"));
        } else if (column.shape != Shape::flat) {
          constants.add(entry.label.number);
        }
        collect(entry.rates);
      }
    }
  }

  // The list of a literal column that has been resolved.
  [[nodiscard]] constexpr std::optional<Index> list_of(Literals literals) const {
    for (const Page &page : pages) {
      if (page.literals.data() == literals.data() && page.literals.size() == literals.size()) {
        return page.list;
      }
    }
    return std::nullopt;
  }

  // A new list of the literals; equal pages are resolved once, every use still makes its own list.
  constexpr Index resolve(Literals literals) {
    if (const std::optional<Index> known = list_of(literals)) {
      return *known;
    }
    const auto list = static_cast<Index>(lists.size());
    ListRecipe recipe;
    recipe.first = static_cast<Index>(slots.size());
    recipe.length = static_cast<Index>(literals.size());
    for (const Number &number : literals) {
      slots.push_back(constants.of(number));
    }
    lists.push_back(recipe);
    pages.push_back({.literals = literals, .list = list});
    return list;
  }

  constexpr void resolve(const Payload &table) {
    PayloadRecipe recipe;
    recipe.first_field = static_cast<Index>(fields.size());
    for (const Key key : table.order) {
      fields.push_back({.key = constants.of(text_of(key)), .value = value_of(key, table)});
    }
    recipe.fields = static_cast<Index>(table.order.size());
    recipe.first_column = static_cast<Index>(columns.size());
    for (const Column &column : table.data) {
      resolve(column);
    }
    recipe.columns = static_cast<Index>(table.data.size());
    recipe.data_key = constants.of(data_key);
    if (table.data_source) {
      recipe.source_attribute = constants.of(table.data_source->attribute);
      recipe.source_key = constants.of(table.data_source->key);
    }
    payloads.push_back(recipe);
  }

private:
  static constexpr std::string_view data_key = "data";

  static constexpr double closing_of(const Rates &rates) {
    return rates.origin == Rates::Origin::proportional ? 0.0 : 1.0;
  }

  constexpr void collect(Number number) {
    if (number.integer) {
      constants.add(static_cast<int>(number.value));
    } else {
      constants.add(number.value);
    }
  }

  constexpr void collect(const Rates &rates) {
    collect(rates.literals);
    for (const Level &level : rates.levels) {
      collect(level.rate);
    }
    if (rates.has_base()) {
      constants.add(rates.base->name);
      constants.add(rates.factor);
      constants.add(closing_of(rates));
    }
  }

  constexpr Index resolve(const Rates &rates) {
    if (rates.origin == Rates::Origin::literal) {
      return resolve(rates.literals);
    }
    ListRecipe recipe;
    recipe.origin = rates.origin;
    recipe.first = static_cast<Index>(slots.size());
    for (const Level &level : rates.levels) {
      slots.push_back(constants.of(level.rate));
      slots.push_back(static_cast<Index>(level.ages));
    }
    recipe.length = static_cast<Index>(slots.size() - recipe.first);
    if (rates.has_base()) {
      recipe.base = constants.of(rates.base->name);
      recipe.factor = constants.of(rates.factor);
      recipe.closing = constants.of(closing_of(rates));
      recipe.length = static_cast<Index>(rates.base->rates.size());
    }
    lists.push_back(recipe);
    return static_cast<Index>(lists.size() - 1);
  }

  [[nodiscard]] constexpr Index label_of(const Column &column, Label label) const {
    if (column.shape == Shape::flat) {
      return constants.none();
    }
    return label.ultimate ? constants.of(std::string_view("ult")) : constants.of(label.number);
  }

  constexpr void resolve(const Column &column) {
    ColumnRecipe recipe;
    recipe.key = constants.of(column.key);
    recipe.shape = column.shape;
    recipe.first_entry = static_cast<Index>(entries.size());
    recipe.entries = static_cast<Index>(column.entries.size());
    for (const Entry &entry : column.entries) {
      entries.push_back({.label = label_of(column, entry.label), .list = resolve(entry.rates)});
    }
    columns.push_back(recipe);
  }

  [[nodiscard]] constexpr Index value_of(Key key, const Payload &table) const {
    switch (key) {
    case Key::table_name:
      return constants.of(table.table_name);
    case Key::table_type:
      return constants.of(text_of(table.table_type));
    case Key::base_year:
      return table.base_year ? constants.of(*table.base_year) : constants.none();
    case Key::generational:
      return constants.of_flag(table.formula.has_value());
    case Key::select:
    case Key::sex_independent:
      return constants.of_flag(true);
    case Key::select_period:
      return constants.of(table.select_period.value());
    case Key::decrement_scale_factor:
      return constants.of(static_cast<int>(table.unit));
    case Key::mi_scale_factor:
      return table.formula ? constants.of(1) : constants.none();
    case Key::omega:
      return constants.of(table.omega);
    case Key::start_age:
      return constants.of(table.start_age);
    case Key::generational_formula_type:
      return constants.of(text_of(table.formula.value()));
    case Key::description:
      return constants.of(table.description);
    }
    throw "a metadata key that nobody has heard of";
  }
};

// A sequence of the compiler's, cut to its length: what the binary holds.
template <std::size_t Size, class T, std::size_t Room>
constexpr std::array<T, Size> cut_to_length(const Bounded<T, Room> &items) {
  std::array<T, Size> exact{};
  std::ranges::copy(items, exact.begin());
  return exact;
}

} // namespace marlune::tables

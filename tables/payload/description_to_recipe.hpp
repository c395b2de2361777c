#pragma once

// From descriptions to recipes, by the compiler.

#include "payload/numbers.hpp"
#include "payload/recipes.hpp"

#include <algorithm>
#include <array>
#include <bit>

namespace marlune::tables {

namespace detail {

constexpr std::uint64_t mixed(std::uint64_t bits) { return bits * 0x9E37'79B9'7F4A'7C15U; }

// By bits, so that 0.0 and -0.0 would stay apart.
constexpr std::uint64_t hash(double value) { return mixed(std::bit_cast<std::uint64_t>(value)); }
constexpr std::uint64_t hash(int value) { return mixed(static_cast<std::uint64_t>(value)); }
constexpr std::uint64_t hash(std::string_view text) {
  std::uint64_t bits = text.size();
  for (const char letter : text.substr(0, 24)) {
    bits = mixed(bits + static_cast<unsigned char>(letter));
  }
  return bits;
}

constexpr bool same(double left, double right) {
  return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}
constexpr bool same(int left, int right) { return left == right; }
constexpr bool same(std::string_view left, std::string_view right) { return left == right; }

} // namespace detail

// Distinct values of one kind, in the order of their first use: what the import makes one after the
// other it also reads one after the other. `First` is the index of the first.
template <class T, std::size_t Room, std::size_t First> class Distinct {
public:
  constexpr Index add(T value) {
    std::size_t slot = static_cast<std::size_t>(detail::hash(value) >> (64U - bits));
    while (table_[slot] != 0 && !detail::same(items_[table_[slot] - First], value)) {
      slot = (slot + 1) % table_.size();
    }
    if (table_[slot] == 0) {
      table_[slot] = index_of(First + items_.size());
      items_.push_back(value);
    }
    return table_[slot];
  }

  [[nodiscard]] constexpr std::size_t size() const { return items_.size(); }
  [[nodiscard]] constexpr const auto &items() const { return items_; }

private:
  static constexpr unsigned bits = std::bit_width(2 * Room);

  static_assert(First > 0, "0 marks an empty place of the table");
  Bounded<T, Room> items_;
  std::array<Index, std::size_t{1} << bits> table_{};
};

// The distinct constants.
struct Constants {
  Distinct<int, room::ints, constant::first_int> ints;
  Distinct<std::string_view, room::texts, constant::first_text> texts;
  Distinct<double, room::floats, constant::first_float> floats;

  constexpr Index add(int value) { return ints.add(value); }
  constexpr Index add(double value) { return floats.add(value); }
  constexpr Index add(std::string_view text) { return texts.add(text); }
  constexpr Index add(Number number) {
    return number.integer ? add(static_cast<int>(number.value)) : add(number.value);
  }
};

// Takes descriptions in, one after the other; what `add` returns is the index of its recipe.
class Cookbook {
public:
  Constants constants;
  Bounded<Index, room::slots> slots;
  Bounded<ListRecipe, room::lists> lists;
  Bounded<EntryRecipe, room::lists> entries;
  Bounded<ColumnRecipe, room::columns> columns;
  Bounded<FieldRecipe, room::fields> fields;
  Bounded<PayloadRecipe, room::tables> payloads;

  constexpr Index add(const Payload &table) {
    PayloadRecipe recipe;
    recipe.first_field = index_of(fields.size());
    recipe.fields = index_of(table.order.size());
    for (const Key key : table.order) {
      fields.push_back({.key = constants.add(text_of(key)), .value = value_of(key, table)});
    }
    recipe.first_column = index_of(columns.size());
    recipe.columns = index_of(table.data.size());
    for (const Column &column : table.data) {
      add(column);
    }
    recipe.data_key = constants.add("data");
    if (table.data_source) {
      recipe.source_attribute = constants.add(table.data_source->attribute);
      recipe.source_key = constants.add(table.data_source->key);
    }
    payloads.push_back(recipe);
    return index_of(payloads.size() - 1);
  }

  constexpr Index add(const Rates &rates) {
    ListRecipe recipe;
    recipe.origin = rates.origin;
    if (rates.base == nullptr) {
      add_slots(numbers_of(rates), recipe);
    } else {
      recipe.length = index_of(rates.base->rates.size());
      recipe.base = constants.add(rates.base->name);
      recipe.factor = constants.add(rates.factor);
      recipe.closing = constants.add(rates.origin == Rates::Origin::proportional ? 0.0 : 1.0);
    }
    lists.push_back(recipe);
    return index_of(lists.size() - 1);
  }

private:
  constexpr void add_slots(const Numbers &numbers, ListRecipe &recipe) {
    recipe.first = index_of(slots.size());
    recipe.length = index_of(numbers.size());
    for (const Number &number : numbers) {
      slots.push_back(constants.add(number));
    }
  }

  constexpr void add(const Column &column) {
    columns.push_back({.key = constants.add(column.key),
                       .shape = column.shape,
                       .first_entry = index_of(entries.size()),
                       .entries = index_of(column.entries.size())});
    for (const Entry &entry : column.entries) {
      entries.push_back({.label = label_of(column, entry.label), .list = add(entry.rates)});
    }
  }

  constexpr Index label_of(const Column &column, Label label) {
    if (column.shape == Shape::flat) {
      return constant::none;
    }
    return label.ultimate ? constants.add("ult") : constants.add(label.number);
  }

  constexpr Index value_of(Key key, const Payload &table) {
    switch (key) {
    case Key::table_name:
      return constants.add(table.table_name);
    case Key::table_type:
      return constants.add(text_of(table.table_type));
    case Key::base_year:
      return table.base_year ? constants.add(*table.base_year) : constant::none;
    case Key::generational:
      return constant::flag(table.formula.has_value());
    case Key::select:
    case Key::sex_independent:
      return constant::flag(true);
    case Key::select_period:
      return constants.add(table.select_period.value());
    case Key::decrement_scale_factor:
      return constants.add(static_cast<int>(table.unit));
    case Key::mi_scale_factor:
      return table.formula ? constants.add(1) : constant::none;
    case Key::omega:
      return constants.add(table.omega);
    case Key::start_age:
      return constants.add(table.start_age);
    case Key::generational_formula_type:
      return constants.add(text_of(table.formula.value()));
    case Key::description:
      return constants.add(table.description);
    }
    throw "a metadata key that nobody has heard of";
  }
};

} // namespace marlune::tables

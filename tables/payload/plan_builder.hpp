#pragma once

// From descriptions to plans, by the compiler.

#include "payload/constant_pool.hpp"
#include "payload/plans.hpp"
#include "payload/rate_values.hpp"

#include <bit>
#include <iterator>

namespace marlune::tables {

// Takes descriptions in, one after the other; what `add` returns is the index of its plan.
class PlanBuilder {
public:
  ConstantPool constants;
  Bounded<Index, room::slots> slots;
  Bounded<ListPlan, room::lists> lists;
  Bounded<EntryPlan, room::lists> entries;
  Bounded<ColumnPlan, room::columns> columns;
  Bounded<FieldPlan, room::fields> fields;
  Bounded<PayloadPlan, room::tables> payloads;

  constexpr Index add(const Payload &table) {
    PayloadPlan plan;
    plan.first_field = index_of(fields.size());
    plan.fields = index_of(table.order.size());
    for (const Key key : table.order) {
      fields.push_back({.key = constants.add(text_of(key)), .value = value_of(key, table)});
    }
    plan.first_column = index_of(columns.size());
    plan.columns = index_of(table.data.size());
    for (const Column &column : table.data) {
      add(column);
    }
    plan.data_key = constants.add("data");
    if (table.data_source) {
      plan.source_attribute = constants.add(table.data_source->attribute);
      plan.source_key = constants.add(table.data_source->key);
    }
    payloads.push_back(plan);
    return index_of(payloads.size() - 1);
  }

  constexpr Index add(const Rates &rates) {
    ListPlan plan;
    if (rates.origin != Rates::Origin::shared) {
      plan = plan_of(values_of(rates));
    }
    if (rates.base != nullptr) {
      plan.origin = rates.origin;
      plan.base = constants.add(rates.base->name);
      plan.base_first = plan_of(values_of(rates.base->rates)).first;
      plan.factor = constants.add(rates.factor);
      plan.closing = constants.add(rates.origin == Rates::Origin::proportional ? 0.0 : 1.0);
    }
    return add(plan);
  }
  constexpr Index add(const RateValues &values) { return add(plan_of(values)); }

private:
  // Equal lists share their slots. Pointers, because the compiler takes its time for every call.
  constexpr ListPlan plan_of(const RateValues &values) {
    const std::size_t first = slots.size();
    const std::size_t length = values.size();
    if (length == 0) {
      throw "a list without rates";
    }
    slots.resize(first + length);
    Index *const mine = slots.data() + first;
    const Number *const begin = values.begin();
    std::uint64_t hash = 0;
    for (std::size_t slot = 0; slot < length; ++slot) {
      const Number &number = begin[slot];
      if (number.integer && slot + 1 < length) {
        throw "an int before the end of a list: only the last entry may be one";
      }
      mine[slot] = number.integer ? constants.add(static_cast<int>(number.value))
                                  : constants.add(number.value);
      hash = (hash + mine[slot]) * detail::multiplier;
    }
    auto place = static_cast<std::size_t>(hash >> (64U - range_bits));
    for (; ranges_[place].length != 0; place = (place + 1) % std::size(ranges_)) {
      const ListPlan &other = ranges_[place];
      if (other.length == length && equal(slots.data() + other.first, mine, length)) {
        slots.resize(first);
        return other;
      }
    }
    ranges_[place] = {.first = index_of(first), .length = index_of(length)};
    return ranges_[place];
  }

  static constexpr bool equal(const Index *left, const Index *right, std::size_t length) {
    for (std::size_t slot = 0; slot < length; ++slot) {
      if (left[slot] != right[slot]) {
        return false;
      }
    }
    return true;
  }

  constexpr Index add(const ListPlan &plan) {
    lists.push_back(plan);
    return index_of(lists.size() - 1);
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
    throw "a metadata key that the enumeration does not have";
  }

  // By the hash of what they hold, open addressing.
  static constexpr unsigned range_bits = std::bit_width(2 * room::lists);
  ListPlan ranges_[std::size_t{1} << range_bits]{};
};

} // namespace marlune::tables

#pragma once

// Tables once more, under other names and with other rates: what the module would be if it had so
// many more of the same kind. Derived lists keep their base vector and get another factor.

#include "payload/record.hpp"

namespace marlune::tables::scaled {

// The values at which rates end are the same in every table.
constexpr Number varied(Number number, int copy) {
  const bool end = number.value == 0.0 || number.value == 1.0 || number.value == 1000.0;
  return end ? number : Number(number.value * (1.0 + copy * 0x1p-30));
}

constexpr std::size_t literals_of(const Payload &table) {
  std::size_t count = 0;
  for (const Column &column : table.data) {
    for (const Entry &entry : column.entries) {
      count += entry.rates.literals.size();
    }
  }
  return count;
}

template <const Payload &table, int copy>
inline constexpr auto numbers = [] {
  std::array<Number, literals_of(table)> all{};
  std::size_t next = 0;
  for (const Column &column : table.data) {
    for (const Entry &entry : column.entries) {
      for (const Number &number : entry.rates.literals) {
        const bool last = &number == &entry.rates.literals.back();
        all[next] = last ? number : varied(number, copy);
        ++next;
      }
    }
  }
  return all;
}();

template <const Payload &table, int copy>
constexpr Payload copy_of(std::string_view attribute, std::string_view source) {
  Payload copied = table;
  copied.attribute = attribute;
  if (copied.data_source) {
    copied.data_source->attribute = source;
  }
  copied.data = {};
  std::size_t next = 0;
  for (Column column : table.data) {
    const auto entries = column.entries;
    column.entries = {};
    for (Entry entry : entries) {
      const std::size_t count = entry.rates.literals.size();
      entry.rates.literals = Literals(numbers<table, copy>).subspan(next, count);
      entry.rates.factor *= 1.0 + copy * 0x1p-30;
      next += count;
      column.entries.push_back(entry);
    }
    copied.data.push_back(column);
  }
  return copied;
}

} // namespace marlune::tables::scaled

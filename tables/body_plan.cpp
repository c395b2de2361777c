#include "body_plan.hpp"

#include "resolve_body.hpp"

#include <algorithm>
#include <array>
#include <bit>

namespace marlune::tables {

namespace {

constexpr ResolvedBody resolved = resolve_body();

constexpr TextPlan plan_of(std::string_view text) {
  TextPlan plan{.length = index_of(text.size()), .charset = TextPlan::Charset::identifier};
  for (const char letter : text) {
    const bool of_identifier = (letter >= 'a' && letter <= 'z') ||
                               (letter >= 'A' && letter <= 'Z') ||
                               (letter >= '0' && letter <= '9') || letter == '_';
    if (static_cast<unsigned char>(letter) >= 0x80U) {
      plan.charset = TextPlan::Charset::other;
      break;
    }
    if (!of_identifier) {
      plan.charset = TextPlan::Charset::ascii;
    }
  }
  return plan;
}

// What the binary holds: each sequence cut to its length.
template <std::size_t Size, class T, std::size_t Room>
constexpr std::array<T, Size> cut_to_length(const Bounded<T, Room> &items) {
  std::array<T, Size> exact{};
  std::ranges::copy(items, exact.begin());
  return exact;
}

constexpr const PlanBuilder &all = resolved.builder;
constexpr const auto &all_ints = all.constants.ints.items();
constexpr const auto &all_texts = all.constants.texts.items();
constexpr const auto &all_floats = all.constants.floats.items();
constexpr auto ints = cut_to_length<all_ints.size()>(all_ints);
constexpr auto text_bytes = [] {
  constexpr std::size_t size = [] {
    std::size_t sum = 0;
    for (const std::string_view text : all_texts) {
      sum += text.size();
    }
    return sum;
  }();
  std::array<char, size> bytes{};
  char *next = bytes.data();
  for (const std::string_view text : all_texts) {
    next = std::ranges::copy(text, next).out;
  }
  return bytes;
}();
constexpr auto texts = [] {
  std::array<TextPlan, all_texts.size()> plans{};
  std::ranges::transform(all_texts, plans.begin(), plan_of);
  return plans;
}();
constexpr auto floats = std::bit_cast<std::array<double, all_floats.size()>>(
    cut_to_length<all_floats.size()>(all_floats));
constexpr auto slots = cut_to_length<all.slots.size()>(all.slots);
constexpr auto lists = cut_to_length<all.lists.size()>(all.lists);
constexpr auto entries = cut_to_length<all.entries.size()>(all.entries);
constexpr auto columns = cut_to_length<all.columns.size()>(all.columns);
constexpr auto fields = cut_to_length<all.fields.size()>(all.fields);
constexpr auto payloads = cut_to_length<all.payloads.size()>(all.payloads);
constexpr auto bindings = resolved.bindings;
constexpr auto inventory_constants = resolved.inventory;

PyFloatObject float_objects[floats.size()];

} // namespace

constexpr BodyPlan body_plan{
    .plans = {ints, text_bytes, texts, floats, slots, lists, entries, columns, fields, payloads},
    .floats = float_objects,
    .bindings = bindings,
    .inventory = inventory_constants,
    .module_name = resolved.module_name,
    .short_name_line = short_name_line,
    .builtins_line = builtins_line,
};

namespace dav2004r {
constexpr Operands operands = resolved.operands;
}

} // namespace marlune::tables

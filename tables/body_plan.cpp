#include "body_plan.hpp"

#include "body.hpp"
#include "dav2004r/resolve_operands.hpp"
#include "inventory.hpp"
#include "payload/plan_builder.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>

namespace marlune::tables {

namespace {

static_assert([] {
  Bounded<std::string_view, std::size(body)> bound;
  for (const Statement &statement : body) {
    if (statement.kind == Statement::Kind::table) {
      bound.push_back(statement.name);
    }
  }
  prove_inventory(inventory_names, {bound.begin(), bound.end()});
  return true;
}());

struct Resolved {
  PlanBuilder builder;
  dav2004r::Operands operands{};
  std::array<Step, std::size(body)> steps{};
  std::array<Index, std::size(inventory_names)> inventory{};
  Index module_name = 0;
};

constexpr Step resolve(const Statement &statement, PlanBuilder &builder) {
  Step step{.kind = statement.kind,
            .name = builder.constants.add(statement.name),
            .function = statement.function,
            .line = static_cast<int>(statement.place.line())};
  switch (statement.kind) {
  case Statement::Kind::table:
    step.plan = builder.add(*statement.payload);
    break;
  case Statement::Kind::base_vector:
    step.plan = builder.add(literal(statement.base_vector->rates));
    break;
  case Statement::Kind::call:
    step.callee = builder.constants.add(statement.callee);
    break;
  case Statement::Kind::function:
  case Statement::Kind::inventory:
  case Statement::Kind::empty_dict:
    break;
  }
  return step;
}

constexpr Resolved resolved = [] {
  Resolved result;
  PlanBuilder &builder = result.builder;
  // First, because its years have to follow each other.
  result.operands = dav2004r::resolve_operands(builder);
  std::ranges::transform(body, result.steps.begin(),
                         [&](const Statement &statement) { return resolve(statement, builder); });
  std::ranges::transform(inventory_names, result.inventory.begin(),
                         [&](std::string_view name) { return builder.constants.add(name); });
  result.module_name = builder.constants.add("data_tables");
  return result;
}();

constexpr TextPlan plan_of(std::string_view text) {
  TextPlan plan{.length = index_of(text.size()), .kind = TextPlan::Kind::identifier};
  for (const char letter : text) {
    const bool of_identifier = (letter >= 'a' && letter <= 'z') ||
                               (letter >= 'A' && letter <= 'Z') ||
                               (letter >= '0' && letter <= '9') || letter == '_';
    if (static_cast<unsigned char>(letter) >= 0x80U) {
      plan.kind = TextPlan::Kind::other;
      break;
    }
    if (!of_identifier) {
      plan.kind = TextPlan::Kind::ascii;
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
constexpr auto steps = resolved.steps;
constexpr auto inventory_constants = resolved.inventory;

PyFloatObject float_objects[floats.size()];

} // namespace

constexpr BodyPlan body_plan{
    .plans = {ints, text_bytes, texts, floats, slots, lists, entries, columns, fields, payloads},
    .floats = float_objects,
    .steps = steps,
    .inventory = inventory_constants,
    .module_name = resolved.module_name,
    .short_name_line = short_name_line,
    .builtins_line = builtins_line,
};

namespace dav2004r {
constexpr Operands operands = resolved.operands;
}

} // namespace marlune::tables

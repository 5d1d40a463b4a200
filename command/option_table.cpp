#include "command/option_table.h"

#include <CLI/CLI.hpp>

namespace vellobar::command {

namespace {

OptionRow row_of(const CLI::Option& option) {
  OptionRow row;
  row.is_argument = option.get_positional();
  row.name = row.is_argument ? option.get_name(true) : "--" + option.get_lnames().front();
  row.description = option.get_description();
  row.is_required = option.get_required();
  row.may_repeat = option.get_items_expected_max() > 1;
  const bool is_flag = option.get_items_expected_max() == 0;
  if (!row.is_argument && !is_flag) row.value = option.get_type_name();
  return row;
}

}  // namespace

std::vector<const CLI::App*> verbs_of(const CLI::App& program) {
  return program.get_subcommands(
      [](const CLI::App* verb) { return !verb->get_name().empty() && !verb->get_group().empty(); });
}

std::vector<OptionRow> rows_of(const CLI::App& app) {
  std::vector<OptionRow> rows;
  for (const CLI::App* group : app.get_subcommands([](const CLI::App* inner) { return inner->get_name().empty(); })) {
    for (OptionRow& row : rows_of(*group)) {
      if (row.name != "--help") rows.push_back(std::move(row));
    }
  }
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_positional() || !option->get_lnames().empty()) rows.push_back(row_of(*option));
  }
  return rows;
}

}  // namespace vellobar::command

#include "automation/hosting/bindable_values.h"

#include "mailbox/vellobar.h"

namespace vellobar::automation {

namespace {

template <auto Member>
bool differ(const BindableValues& before, const BindableValues& after) {
  return before.*Member != after.*Member;
}

struct Row {
  DISPID identifier;
  bool (*differs)(const BindableValues&, const BindableValues&);
};

constexpr Row kRows[] = {
    {kFilename, differ<&BindableValues::filename>}, {kAutoUpdate, differ<&BindableValues::auto_update>},
    {kChanged, differ<&BindableValues::changed>},   {kLanguage, differ<&BindableValues::language>},
    {kCharSet, differ<&BindableValues::char_set>},
};

}  // namespace

BindableValues bindable_values(const CVellobar& control) {
  return {control.Filename(), control.AutoUpdate(), control.Changed(), CVellobar::Language(), CVellobar::CharSet()};
}

std::vector<DISPID> differences(const BindableValues& before, const BindableValues& after) {
  std::vector<DISPID> found;
  for (const Row& row : kRows) {
    if (row.differs(before, after)) found.push_back(row.identifier);
  }
  return found;
}

}  // namespace vellobar::automation

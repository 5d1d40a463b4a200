// The walk over a list that every enumerator of the component makes.
#include "automation/list_enumerator.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "automation/com_ptr.h"

namespace vellobar::automation {

namespace {

/// Texts, of which an absent one cannot be handed out.
struct FragileTexts {
  using Interface = IEnumString;
  using Item = const wchar_t*;
  using Given = LPOLESTR;
  static void give(const wchar_t* text, LPOLESTR& to) {
    if (text == nullptr) throw std::bad_alloc();
    to = const_cast<LPOLESTR>(text);
    ++held_by_callers;
  }
  static void take_back(LPOLESTR) { --held_by_callers; }

  static inline int held_by_callers = 0;
};

}  // namespace

TEST(ListEnumerator, what_was_handed_out_before_a_failure_is_taken_back) {
  ComPtr<IEnumString> walk;
  ASSERT_EQ(enumerate<FragileTexts>(walk.receive(), [] { return std::vector<const wchar_t*>{L"a", nullptr}; }), S_OK);
  wchar_t before[] = L"before";
  LPOLESTR found[2] = {before, before};
  ULONG fetched = 7;
  EXPECT_EQ(walk->Next(2, found, &fetched), E_OUTOFMEMORY);
  EXPECT_EQ(fetched, 0u);
  EXPECT_EQ(found[0], nullptr);
  EXPECT_EQ(found[1], nullptr);
  EXPECT_EQ(FragileTexts::held_by_callers, 0);
  EXPECT_EQ(walk->Next(1, found, &fetched), S_OK);
  EXPECT_EQ(fetched, 1u);
  EXPECT_EQ(std::wstring(found[0]), L"a");
}

TEST(ListEnumerator, places_that_no_item_is_left_for_are_emptied) {
  ComPtr<IEnumString> walk;
  ASSERT_EQ(enumerate<FragileTexts>(walk.receive(), [] { return std::vector<const wchar_t*>{L"a"}; }), S_OK);
  wchar_t before[] = L"before";
  LPOLESTR found[2] = {before, before};
  ULONG fetched = 7;
  EXPECT_EQ(walk->Next(2, found, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 1u);
  EXPECT_EQ(std::wstring(found[0]), L"a");
  EXPECT_EQ(found[1], nullptr);
}

}  // namespace vellobar::automation

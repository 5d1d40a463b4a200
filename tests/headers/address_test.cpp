#include "headers/address.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace vellobar {
namespace {

using namespace std::string_view_literals;
using headers::address_list_text;
using headers::address_of;
using headers::display_name_of;
using headers::from_each_address;

std::string names_in(std::string_view list) { return from_each_address(list, display_name_of); }
std::string addresses_in(std::string_view list) { return from_each_address(list, address_of); }

class Address : public testing::Test {
 protected:
  ~Address() override { platform::set_process_code_page(0); }
};

TEST_F(Address, names_and_addresses_of_single_texts_are_those_worked_out_by_hand) {
  const struct {
    std::string_view text;
    std::string_view name;
    std::string_view address;
  } rows[] = {
      // The common forms.
      {"John <john@example>", "John", "john@example"},
      {"John Smith <john@example>", "John Smith", "john@example"},
      {"\"Smith, John\" <js@example>", "Smith, John", "js@example"},
      {"'John' <john@example>", "John", "john@example"},
      {"\"'John'\" <john@example>", "John", "john@example"},
      {"<john@example>", "", "john@example"},
      {"john@example", "john@example", "john@example"},
      {"John", "John", ""},
      {"", "", ""},
      {" ", "", ""},
      {"John Smith john@example", "John Smith", "john@example"},
      {"Name john@example", "Name", "john@example"},
      {"john@example (John)", "john@example (John)", "john@example"},
      {"john@example John", "john@example John", "john@example"},
      // Spaces.
      {"  John  <john@example>  ", "John", "john@example"},
      {" john@example ", "john@example", "john@example"},
      {"John < john@example >", "John", "john@example"},
      {"John <a b@c d>", "John", "b@c"},
      {"John  Smith  js@x", "John  Smith ", "js@x"},
      {"a\tb@c", "a\tb@c", "a\tb@c"},
      {"\tJohn\t<j@x>", "\tJohn\t", "j@x"},
      {"John\r\n <j@x>", "John\r\n", "j@x"},
      // Brackets without their fellow.
      {"John <john@example", "John", "<john@example"},
      {"John john@example>", "John", "john@example>"},
      {"John >j@x<", "John", ">j@x<"},
      {"John <>", "John", ""},
      {"John <> j@x", "John", ""},
      {"<<j@x>>", "", "<j@x"},
      {"a <b> c <d@e>", "a", ""},
      {"a <b@c> d <e@f>", "a", "b@c"},
      {"<j@x> John", "", "j@x"},
      // Brackets inside double quotes do not count, inside apostrophes they do.
      {"\"a <b\" <c@d>", "a <b", "c@d"},
      {"\"a <b@c>\"", "a", "<b@c>\""},
      {"'a <b' <c@d>", "a", "<c@d"},
      {"\"open <b@c>", "open", "<b@c>"},
      {"a\"b\" <c@d>", "a\"b", "c@d"},
      {"a\" <c@d>\"", "a", "<c@d>\""},
      {"\"\" <c@d>", "", "c@d"},
      // Quotes and apostrophes around and inside.
      {"O'Brien <o@b>", "O'Brien", "o@b"},
      {"'O'Brien' <o@b>", "O'Brien", "o@b"},
      {"John' <j@x>", "John", "j@x"},
      {"\"John Smith <j@x>", "John Smith", "<j@x>"},
      {"'\" John \"' <j@x>", "John", "j@x"},
      {"'j@x'", "j@x", "'j@x'"},
      {"\"j@x\"", "j@x", "\"j@x\""},
      {"'j@x' <j@x>", "j@x", "j@x"},
      {"\"j@x\" <j@x>", "j@x", "j@x"},
      {"''", "", ""},
      {"\"", "", ""},
      {"John\" j@x", "John", "j@x"},
      {"John' \" j@x", "John' ", "j@x"},
      // More than one "@", none, or nothing beside it.
      {"a@b@c", "a@b@c", "a@b@c"},
      {"x a@b c@d", "x", "a@b"},
      {"@", "@", "@"},
      {" @ ", "@", "@"},
      {"John @", "John", "@"},
      {"John <@x>", "John", "@x"},
      {"John <j@>", "John", "j@"},
      {"John <j>", "John", ""},
      {"a@b <c@d>", "a@b", "c@d"},
      {"x a@b <c@d>", "x", "c@d"},
      // Other bytes.
      {"J\xF6rg <j@x>", "J\xF6rg", "j@x"},
      {"J\0n <j\0@x>"sv, "J\0n"sv, "j\0@x"sv},
      {"a@b;c@d", "a@b;c@d", "a@b;c@d"},
      {"a@b, c@d", "a@b, c@d", "a@b,"},
      {"undisclosed-recipients:;", "undisclosed-recipients:;", ""},
      {"=?utf-8?q?a?= <b@c>", "=?utf-8?q?a?=", "b@c"},
  };
  static_assert(std::size(rows) >= 60);
  for (const auto& row : rows) {
    EXPECT_EQ(display_name_of(row.text), row.name) << row.text;
    EXPECT_EQ(address_of(row.text), row.address) << row.text;
  }
}

TEST_F(Address, lists_of_names_and_addresses_are_those_worked_out_by_hand) {
  const struct {
    std::string_view list;
    std::string_view names;
    std::string_view addresses;
  } rows[] = {
      {"a <a@x>, b <b@y>; c@z", "a, b, c@z", "a@x, b@y, c@z"},
      {"\"Doe, Jane\" <jd@x>", "Doe, Jane", "jd@x"},
      {"'Doe, Jane' <jd@x>, k@x", "Doe, Jane, k@x", "jd@x, k@x"},
      {"a@x", "a@x", "a@x"},
      {"", "", ""},
      {"   ", "", ""},
      {",", ",", ""},
      {", ;a@x,,  ,b@x;", "a@x, b@x", "a@x, b@x"},
      {"John, <j@x>", "John", "j@x"},
      {"a@x\r\n b@y", "a@x, b@y", "a@x, b@y"},
      {"a@x\tb@y", "a@x, b@y", "a@x, b@y"},
      {"a@x\0b@y"sv, "a@x, b@y", "a@x, b@y"},
      // 30 divides, 31 does not.
      {"a\x1E"
       "b",
       "a, b", ""},
      {"a\x1F"
       "b",
       "a\x1F"
       "b",
       ""},
      // Inside quotes, apostrophes and brackets nothing divides.
      {"\"a;b\xE9"
       "c\" <d@e>,f@g",
       "a;b\xE9"
       "c, f@g",
       "d@e, f@g"},
      {"<a,b@c>, d@e", "d@e", "a,b@c, d@e"},
      {"\"it's, fine\" <a@b>, c@d", "it's, fine, c@d", "a@b, c@d"},
      {"'say \", fine' <a@b>, c@d", "say \", fine, c@d", "<a@b>, c@d"},
      // The end of the text ends an entry whatever is open.
      {"a@b, \"c, d@e", "a@b, c,", "a@b, d@e"},
      {"a@b, 'c, d@e", "a@b, c,", "a@b, d@e"},
      {"a@b, c <d, e@f", "a@b, c", "a@b, e@f"},
      // A bracket counts inside quotes, too: it stays open there.
      {"\"a<b\", c@d", "a<b\",", "c@d"},
      {"O'Brien <o@b>, c@d", "O'Brien", "o@b"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(names_in(row.list), row.names) << row.list;
    EXPECT_EQ(addresses_in(row.list), row.addresses) << row.list;
  }
}

TEST_F(Address, an_unquoted_8_bit_byte_splits_an_entry_as_a_comma_would) {
  EXPECT_EQ(names_in("J\xF6rg <j@x>, b@y"), "J, rg, b@y");
  EXPECT_EQ(names_in("\"J\xF6rg\" <j@x>, b@y"), "J\xF6rg, b@y");
}

TEST_F(Address, a_comma_inside_quotes_does_not_split_a_list_that_is_read) {
  EXPECT_EQ(addresses_in("\"Doe, Jane\" <jd@x>"), "jd@x");
}

TEST_F(Address, the_writer_puts_every_name_in_quotes_and_every_address_in_brackets) {
  EXPECT_EQ(address_list_text(u"John Smith <john@example>, jane@example"),
            u"\"John Smith\" <john@example>, \"jane@example\" <jane@example>");
}

TEST_F(Address, the_writer_does_not_split_at_a_semicolon) {
  // No space stands before the first "@", so the whole is the name; the address runs up to the space.
  EXPECT_EQ(address_list_text(u"a@x; b@y"), u"\"a@x; b@y\" <a@x;>");
}

TEST_F(Address, the_writer_splits_at_a_comma_inside_quotes) {
  // The second entry's one quote opens, so that its "<" does not count and the address keeps its brackets.
  EXPECT_EQ(address_list_text(u"\"Doe, Jane\" <jd@x>"), u"\"Doe\", \"Jane\" <<jd@x>>");
}

TEST_F(Address, the_writer_divides_at_whichever_of_comma_and_line_feed_comes_first) {
  EXPECT_EQ(address_list_text(u"a@x\r\nb@y,c@z\nd@w"), u"\"a@x\" <a@x>, \"b@y\" <b@y>, \"c@z\" <c@z>, \"d@w\" <d@w>");
  // The CR before a comma is no part of a line end.
  EXPECT_EQ(address_list_text(u"A\r,b@y"), u"\"A\r\", \"b@y\" <b@y>");
}

TEST_F(Address, the_writer_keeps_a_CR_that_no_line_feed_of_the_text_follows) {
  // CR LF is put behind the text before it is divided, so a CR at its end is followed by another CR.
  EXPECT_EQ(address_list_text(u"John\r"), u"\"John\r\"");
  EXPECT_EQ(address_list_text(u"\r"), u"\"\r\"");
  EXPECT_EQ(address_list_text(u"a@x,\r"), u"\"a@x\" <a@x>, \"\r\"");
  EXPECT_EQ(address_list_text(u"a@x\r\n\r"), u"\"a@x\" <a@x>, \"\r\"");
}

TEST_F(Address, the_writer_drops_one_CR_before_a_line_feed) {
  EXPECT_EQ(address_list_text(u"John\r\n"), u"\"John\"");
  EXPECT_EQ(address_list_text(u"John\r\r\nJane"), u"\"John\r\", \"Jane\"");
  EXPECT_EQ(address_list_text(u"\r\n"), u"");
  EXPECT_EQ(address_list_text(u"\r\r\n"), u"\"\r\"");
}

TEST_F(Address, the_writer_skips_empty_entries_but_an_entry_of_blanks_leaves_its_comma) {
  EXPECT_EQ(address_list_text(u""), u"");
  EXPECT_EQ(address_list_text(u",,\r\n,"), u"");
  EXPECT_EQ(address_list_text(u"  "), u"");
  EXPECT_EQ(address_list_text(u",a@x,,b@y,"), u"\"a@x\" <a@x>, \"b@y\" <b@y>");
  EXPECT_EQ(address_list_text(u"a@x, "), u"\"a@x\" <a@x>, ");
  EXPECT_EQ(address_list_text(u" ,a@x"), u"\"a@x\" <a@x>");
  EXPECT_EQ(address_list_text(u"a@x, ,b@y"), u"\"a@x\" <a@x>, , \"b@y\" <b@y>");
}

TEST_F(Address, an_entry_without_a_name_gets_a_space_after_the_comma_of_an_earlier_one) {
  EXPECT_EQ(address_list_text(u"<a@x>"), u"<a@x>");
  EXPECT_EQ(address_list_text(u"a <a@x>, <b@y>"), u"\"a\" <a@x>,  <b@y>");
  EXPECT_EQ(address_list_text(u"John"), u"\"John\"");
}

TEST_F(Address, the_writer_encodes_names_with_their_quotes_and_addresses_alone) {
  platform::set_process_code_page(1252);
  // Base64 of the UTF-8 of "Jörg" in double quotes: 22 4A C3 B6 72 67 22.
  EXPECT_EQ(address_list_text(u"J\u00F6rg <j@x>"), u"=?UTF-8?B?IkrDtnJnIg==?= <j@x>");
  // And of "ö@x": C3 B6 40 78.
  EXPECT_EQ(address_list_text(u"J <\u00F6@x>"), u"\"J\" <=?UTF-8?B?w7ZAeA==?=>");
}

TEST_F(Address, the_writer_widens_with_the_process_code_page_before_it_encodes) {
  platform::set_process_code_page(1251);
  // U+0436 is E6 in 1251; its UTF-8 in double quotes is 22 D0 B6 22.
  EXPECT_EQ(address_list_text(u"\u0436 <j@x>"), u"=?UTF-8?B?ItC2Ig==?= <j@x>");
  // What the code page cannot hold becomes "?" and so needs no encoding.
  EXPECT_EQ(address_list_text(u"\u4E00 <j@x>"), u"\"?\" <j@x>");
}

TEST_F(Address, a_lone_surrogate_from_the_client_becomes_a_question_mark) {
  platform::set_process_code_page(1252);
  const char16_t lone[] = {u'a', 0xDC00, u' ', u'<', u'j', u'@', u'x', u'>', 0};
  EXPECT_EQ(address_list_text(lone), u"\"a?\" <j@x>");
}

TEST_F(Address, a_process_code_page_the_platform_lacks_leaves_nothing_to_write) {
  platform::set_process_code_page(4321);
  EXPECT_EQ(address_list_text(u"a@x"), u"");
}

TEST_F(Address, megabyte_lists_are_read_and_written_whole) {
  constexpr int kEntries = 100'000;
  std::string list;
  std::string addresses;
  for (int i = 0; i < kEntries; ++i) {
    list += i == 0 ? "n <a@b>" : ", n <a@b>";
    addresses += i == 0 ? "a@b" : ", a@b";
  }
  EXPECT_EQ(addresses_in(list), addresses);
  const std::u16string written = address_list_text(std::u16string(list.begin(), list.end()));
  EXPECT_EQ(written.size(), std::size_t{kEntries} * std::string_view("\"n\" <a@b>, ").size() - 2);
  const std::string open(std::size_t{1} << 20, '"');
  EXPECT_EQ(names_in(open), "");
  EXPECT_EQ(addresses_in(std::string(std::size_t{1} << 20, '@')).size(), std::size_t{1} << 20);
}

}  // namespace
}  // namespace vellobar

#include "attachments/found_blocks.h"

#include <gtest/gtest.h>

#include "attachments/attachment.h"

namespace vellobar::attachments {
namespace {

CodedRange block(std::string path, std::int64_t size) {
  return {.file = nullptr, .start = 0, .end = size, .reopened_from = std::move(path)};
}

TEST(FoundBlocks, give_the_name_the_size_and_the_file_of_each) {
  FoundBlocks blocks;
  blocks.add(u"one", block("/tmp/VLBa.tmp", 25));
  blocks.add(u"", block("/tmp/VLBb.tmp", 5'000'000'000));
  blocks.add(u"\u00E9\xD800", block("/tmp/VLBlonger.tmp", 7));
  ASSERT_EQ(blocks.size(), 3u);
  EXPECT_EQ(blocks.name(0), u"one");
  EXPECT_EQ(blocks.name(1), u"");
  EXPECT_EQ(blocks.name(2), u"\u00E9\xD800");
  EXPECT_EQ(blocks.range(0).reopened_from, "/tmp/VLBa.tmp");
  EXPECT_EQ(blocks.range(1).reopened_from, "/tmp/VLBb.tmp");
  EXPECT_EQ(blocks.range(2).reopened_from, "/tmp/VLBlonger.tmp");
  EXPECT_EQ(blocks.range(0).end, 25);
  EXPECT_EQ(blocks.range(1).end, 5'000'000'000);
  EXPECT_EQ(blocks.range(2).end, 7);
  EXPECT_EQ(blocks.range(2).start, 0);
}

TEST(FoundBlocks, find_their_files_when_the_temporary_folder_became_another_one) {
  const std::string paths[] = {"/one/VLBa.tmp", "/two/VLBa.tmp", "/one/VLBb.tmp", "./VLBc.tmp", "C:\\temp\\VLBd.tmp"};
  for (const std::string& first : paths) {
    FoundBlocks blocks;
    blocks.add(u"first", block(first, 1));
    for (const std::string& path : paths) blocks.add(u"x", block(path, 1));
    EXPECT_EQ(blocks.range(0).reopened_from, first);
    for (std::size_t i = 0; i < std::size(paths); ++i) EXPECT_EQ(blocks.range(i + 1).reopened_from, paths[i]);
  }
}

TEST(FoundBlocks, without_a_path_take_the_folder_of_the_first_that_has_one) {
  FoundBlocks blocks;
  blocks.add(u"kept open", block("", 1));
  blocks.add(u"not", block("/tmp/VLBa.tmp", 1));
  blocks.add(u"not", block("/tmp/VLBb.tmp", 1));
  EXPECT_EQ(blocks.range(1).reopened_from, "/tmp/VLBa.tmp");
  EXPECT_EQ(blocks.range(2).reopened_from, "/tmp/VLBb.tmp");
}

}  // namespace
}  // namespace vellobar::attachments

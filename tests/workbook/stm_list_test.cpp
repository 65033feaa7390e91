// The list of a file's open items: both ends, the links, the count, and lists that are no lists.
#include <gtest/gtest.h>

#include "workbook/stm_file.h"

namespace tolvenar::testing {
namespace {

constexpr int32_t Code(uint32_t code) {
  return static_cast<int32_t>(code);
}

class StmListTest : public ::testing::Test {
 protected:
  StmFFile file;
};

TEST_F(StmListTest, AddItem_GoesToTheTail) {
  StmFItem a, b, c;
  EXPECT_EQ(file.AddItem(&a), 0);
  EXPECT_EQ(file.AddItem(&b), 0);
  EXPECT_EQ(file.AddItem(&c), 0);
  EXPECT_EQ(file.itemCount, 3);
  EXPECT_EQ(file.firstItem, &a);
  EXPECT_EQ(a.next, &b);
  EXPECT_EQ(b.previous, &a);
  EXPECT_EQ(b.next, &c);
  EXPECT_EQ(file.lastItem, &c);
  EXPECT_EQ(c.owner, &file);
}

TEST_F(StmListTest, AddItem_ListWithOneEnd) {
  StmFItem a, b;
  file.firstItem = &a;
  EXPECT_EQ(file.AddItem(&b), Code(0x80000F06));
  file.firstItem = nullptr;
  file.lastItem = &a;
  EXPECT_EQ(file.AddItem(&b), Code(0x80000F06));
  EXPECT_EQ(b.owner, nullptr);
  EXPECT_EQ(file.itemCount, 0);
}

TEST_F(StmListTest, AddItem_OfOneThatWasRemoved_ForgetsItsOldLinks) {
  StmFItem a, b;
  file.AddItem(&a);
  file.AddItem(&b);
  file.RemoveItem(&a);
  EXPECT_EQ(file.AddItem(&a), 0);
  EXPECT_EQ(file.firstItem, &b);
  EXPECT_EQ(b.next, &a);
  EXPECT_EQ(a.previous, &b);
  EXPECT_EQ(a.next, nullptr);
  file.RemoveItem(&a);
  file.RemoveItem(&b);
  EXPECT_EQ(file.AddItem(&a), 0);
  EXPECT_EQ(a.previous, nullptr);
  EXPECT_EQ(file.firstItem, &a);
}

TEST_F(StmListTest, RemoveItem_AtEveryPlace_ItsOwnLinksStay) {
  for (int place = 0; place < 3; ++place) {
    StmFFile list;
    StmFItem items[3];
    for (StmFItem& each : items) list.AddItem(&each);
    StmFItem* const previous = items[place].previous;
    StmFItem* const next = items[place].next;
    EXPECT_EQ(list.RemoveItem(&items[place]), 0);
    EXPECT_EQ(items[place].previous, previous);
    EXPECT_EQ(items[place].next, next);
    EXPECT_EQ(list.itemCount, 2);
    StmFItem* const first = &items[place == 0 ? 1 : 0];
    StmFItem* const last = &items[place == 2 ? 1 : 2];
    EXPECT_EQ(list.firstItem, first);
    EXPECT_EQ(list.lastItem, last);
    EXPECT_EQ(first->next, last);
    EXPECT_EQ(last->previous, first);
  }
}

TEST_F(StmListTest, RemoveItem_FromAListWithOneEnd) {
  StmFItem a;
  file.firstItem = &a;
  file.itemCount = 1;
  EXPECT_EQ(file.RemoveItem(&a), 0);
  EXPECT_EQ(file.firstItem, nullptr);
  file.lastItem = &a;
  EXPECT_EQ(file.RemoveItem(&a), 0);
  EXPECT_EQ(file.lastItem, nullptr);
  file.itemCount = 0;
}

TEST_F(StmListTest, RemoveItem_LastOneAndFailures) {
  StmFItem a;
  EXPECT_EQ(file.RemoveItem(nullptr), Code(0x80000F06));
  EXPECT_EQ(file.RemoveItem(&a), Code(0x80000F06));
  file.AddItem(&a);
  EXPECT_EQ(file.RemoveItem(nullptr), Code(0x80000F03));
  EXPECT_EQ(file.RemoveItem(&a), 0);
  EXPECT_EQ(file.firstItem, nullptr);
  EXPECT_EQ(file.lastItem, nullptr);
  EXPECT_EQ(file.itemCount, 0);
}

}  // namespace
}  // namespace tolvenar::testing

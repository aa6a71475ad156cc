#include "foundation/qreport.h"
#include "foundation/textinfo.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {

struct Heap
{
  size_t inUse = 0;
  size_t largest = 0; // single request
};
Heap heap;

} // namespace

// NOLINTBEGIN(misc-new-delete-overloads)
void* operator new(size_t size)
{
  void* block = std::malloc(size);
  if (!block)
    throw std::bad_alloc();
  heap.inUse += malloc_usable_size(block);
  heap.largest = std::max(heap.largest, size);
  return block;
}
void operator delete(void* block) noexcept
{
  heap.inUse -= block ? malloc_usable_size(block) : 0;
  std::free(block);
}
void operator delete(void* block, size_t) noexcept
{
  operator delete(block);
}
// NOLINTEND(misc-new-delete-overloads)

TEST(QInfoMemory, AnEmptyTreeCostsLessThanAKilobyte)
{
  const TempDir own;
  const InDirectory inside(own.Path(""));
  const QInfo listed("no such file.ini", QInfo::NO_OPEN_WARNING); // the listing of the directory is kept
  const size_t before = heap.inUse;
  const auto info = std::make_unique<QInfo>("no such file.ini", QInfo::NO_OPEN_WARNING);
  EXPECT_LT(heap.inUse - before, 1024u);
}

TEST(QInfoMemory, ATreeIsGivenBackWhole)
{
  size_t before = 0;
  const TempDir own; // whose listing nobody else changes
  const InDirectory inside(own.Path(""));
  // The first round leaves listings of directories, which are kept.
  for (int round = 0; round < 2; ++round) {
    before = heap.inUse;
    TextInfo info("t {\na=1\nb=2\n}\nu~t\n");
    for (int i = 0; i < 1000; ++i)
      info.SetInt("t.k" + std::to_string(i % 100), i);
    info.Get("t.k5");
  }
  EXPECT_EQ(before, heap.inUse);
}

// A value that changes all the time must not eat memory, whatever its length.
TEST(QInfoMemory, SettingAKeyAgainAndAgainTakesNoMore)
{
  TextInfo info("a=1\n");
  info.SetString("a", std::string(500, 'x'));
  const size_t before = heap.inUse;
  for (int i = 0; i < 1000; ++i)
    info.SetString("a", std::string(static_cast<size_t>(i % 500), 'y'));
  EXPECT_EQ(before, heap.inUse);
}

TEST(QInfoMemory, NoRequestOutgrowsTheFile)
{
  std::string words, nested, keys;
  for (int i = 0; i < 50'000; ++i) {
    words += "a ";
    nested += "a {\n";
    keys += std::to_string(i) + "=\n";
  }
  const struct
  {
    const char* name;
    std::string& text;
  } cases[] = {{"words", words}, {"nested", nested}, {"keys", keys}};
  const auto before = std::move(QReports().tap);
  QReports().tap = [](auto...) { return true; };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    heap.largest = 0;
    TextInfo info(c.text + "b~a\n");
    info.Get("0.1.2");
    EXPECT_LT(heap.largest, 16 * c.text.size());
  }
  QReports().tap = before;
}

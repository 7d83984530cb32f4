// The per-thread recycling of object memory: blocks of every size stay
// apart while alive, come back on the thread that released them, and may
// change threads.

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/values/number_value.h"
#include "quorel/values/object_pool.h"
#include "quorel/values/string_value.h"

namespace quorel {
namespace {

TEST(ObjectPoolTest, BlocksOfEverySizeStayApartWhileAlive) {
  std::vector<std::pair<unsigned char *, std::size_t>> blocks;
  for (int round = 0; round < 3; ++round) {
    for (std::size_t size = 0; size <= 300; size += 7) {
      auto *block = static_cast<unsigned char *>(ObjectPool::allocate(size));
      std::memset(block, static_cast<int>(size & 0xFF), size);
      blocks.emplace_back(block, size);
    }
    // Release every other block, so that the next round reuses some.
    for (std::size_t i = 0; i < blocks.size(); i += 2) {
      ObjectPool::release(blocks[i].first, blocks[i].second);
      blocks[i].first = nullptr;
    }
    for (const auto &[block, size] : blocks) {
      for (std::size_t i = 0; block != nullptr && i < size; ++i) ASSERT_EQ(size & 0xFF, block[i]);
    }
    std::vector<std::pair<unsigned char *, std::size_t>> alive;
    for (const auto &entry : blocks) {
      if (entry.first != nullptr) alive.push_back(entry);
    }
    blocks = alive;
  }
  for (const auto &[block, size] : blocks) ObjectPool::release(block, size);
  ObjectPool::release(nullptr, 8);
}

TEST(ObjectPoolTest, AReleasedBlockComesBackOnItsThread) {
  if (!ObjectPool::isRecycling()) GTEST_SKIP() << "this build leaves memory to the heap";
  void *first = ObjectPool::allocate(40);
  ObjectPool::release(first, 40);
  // Any size of the same 16-byte class takes it back.
  void *second = ObjectPool::allocate(48);
  EXPECT_EQ(first, second);
  ObjectPool::release(second, 48);
  auto *value = new NumberValue(2.5);
  auto address = reinterpret_cast<std::uintptr_t>(value);
  delete value;
  auto *again = new NumberValue(3.5);
  EXPECT_EQ(address, reinterpret_cast<std::uintptr_t>(again));
  EXPECT_DOUBLE_EQ(3.5, again->asReal());
  delete again;
}

TEST(ObjectPoolTest, ValuesMayDieOnAnotherThreadAndThreadsEndCleanly) {
  std::vector<std::unique_ptr<Value>> made;
  std::thread maker([&made] {
    for (int i = 0; i < 3000; ++i) made.emplace_back(new StringValue(std::to_string(i).c_str()));
    // The maker keeps some blocks on its lists as it ends.
    for (int i = 0; i < 1000; ++i) made.pop_back();
  });
  maker.join();
  ASSERT_EQ(2000u, made.size());
  EXPECT_STREQ("1999", made.back()->asString());
  made.clear();
}

}  // namespace
}  // namespace quorel

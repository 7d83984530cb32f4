// The hash table of SimpleDataRecord against an ordered map doing the same
// puts and removals, with codes chosen to collide in the table's slots.

#include <cstdint>
#include <map>
#include <memory>
#include <random>

#include <gtest/gtest.h>

#include "quorel/model/code_table.h"

namespace quorel {
namespace {

TEST(CodeTableTest, AgreesWithAnOrderedMapThroughGrowthAndRemovals) {
  CodeTable<std::int32_t> table;
  std::map<std::int32_t, std::int32_t> model;
  std::mt19937 random(16);
  // Few distinct codes, many of them multiples of a large power of two, so
  // that probes run long and removals shift entries back across the wrap.
  std::uniform_int_distribution<std::int32_t> pick(-300, 300);
  for (int step = 0; step < 20000; ++step) {
    std::int32_t code = pick(random) * (step % 3 == 0 ? 1 << 22 : 1);
    std::unique_ptr<std::int32_t> former;
    if (random() % 3 == 0) {
      former = table.put(code, nullptr);
      auto it = model.find(code);
      ASSERT_EQ(it != model.end(), former != nullptr);
      if (it != model.end()) {
        EXPECT_EQ(it->second, *former);
        model.erase(it);
      }
    } else {
      former = table.put(code, std::make_unique<std::int32_t>(step));
      auto it = model.find(code);
      ASSERT_EQ(it != model.end(), former != nullptr);
      if (it != model.end()) {
        EXPECT_EQ(it->second, *former);
      }
      model[code] = step;
    }
    if (step % 97 == 0) {
      for (std::int32_t probe = -300; probe <= 300; ++probe) {
        for (std::int32_t scale : {1, 1 << 22}) {
          auto it = model.find(probe * scale);
          std::int32_t *found = table.find(probe * scale);
          ASSERT_EQ(it != model.end(), found != nullptr) << probe * scale;
          if (found != nullptr) {
            EXPECT_EQ(it->second, *found);
          }
        }
      }
    }
  }
  CodeTable<std::int32_t> empty;
  EXPECT_EQ(nullptr, empty.find(0));
  EXPECT_EQ(nullptr, empty.put(0, nullptr));
}

}  // namespace
}  // namespace quorel

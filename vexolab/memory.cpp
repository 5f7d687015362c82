// SPDX-License-Identifier: MIT
#include "vexolab/memory.h"

#include <limits>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <variant>

namespace vexolab {
namespace {

using block = std::variant<std::vector<float>, std::vector<double>>;

struct block_table {
  std::mutex mutex;
  std::unordered_map<int, block> blocks;
  int last_id = 0;
};

block_table& table() {
  static block_table instance;
  return instance;
}

int next_id(block_table* t) {
  do {
    t->last_id =
        t->last_id == std::numeric_limits<int>::max() ? 1 : t->last_id + 1;
  } while (t->blocks.count(t->last_id) != 0);
  return t->last_id;
}

template <typename T>
int keep_block(std::vector<T> values, T** data) {
  block_table& t = table();
  const std::lock_guard<std::mutex> lock(t.mutex);
  const int id = next_id(&t);
  block& kept = t.blocks.emplace(id, std::move(values)).first->second;
  *data = std::get<std::vector<T>>(kept).data();
  return id;
}

}  // namespace

int keep(std::vector<float> values, float** data) {
  return keep_block(std::move(values), data);
}

int keep(std::vector<double> values, double** data) {
  return keep_block(std::move(values), data);
}

void release(int id) noexcept {
  block_table& t = table();
  std::unordered_map<int, block>::node_type released;
  const std::lock_guard<std::mutex> lock(t.mutex);
  released = t.blocks.extract(id);
}

int kept_count() noexcept {
  block_table& t = table();
  const std::lock_guard<std::mutex> lock(t.mutex);
  return static_cast<int>(t.blocks.size());
}

}  // namespace vexolab

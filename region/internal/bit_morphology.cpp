// SPDX-License-Identifier: MIT
#include "region/internal/bit_morphology.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

#include "region/internal/bit_lines.h"
#include "region/internal/bit_rows.h"

namespace vexo::internal {

bit_plan::bit_plan(const element_runs& element)
    : min_row_(element.front().row), max_row_(element.back().row) {
  // Widths by length, and the rows that have them.
  using width = std::pair<int64_t, int64_t>;  // length, begin
  std::map<width, std::vector<int64_t>> widths;
  for (const element_run& run : element)
    widths[{run.end - run.begin + 1, run.begin}].push_back(run.row);
  const auto [shortest, shortest_begin] = widths.begin()->first;
  // Around the middle of the shortest run the widths of all usual elements
  // contain one another.
  origin_ = shortest_begin + shortest / 2;
  for (const auto& [w, rows] : widths) {
    const int64_t begin = w.second - origin_;
    const int64_t end = begin + w.first - 1;
    reach_width(begin, end);
    steps_.back().first_row = rows_.size();
    rows_.insert(rows_.end(), rows.begin(), rows.end());
    steps_.back().last_row = rows_.size();
    reach_down_ = std::max(reach_down_, -begin);
    reach_up_ = std::max(reach_up_, end);
    longest_ = w.first;
    longest_row_ = rows.front();
  }
}

void bit_plan::reach_width(int64_t begin, int64_t end) {
  const bool restart = steps_.empty() || begin > begin_ || end < end_;
  if (restart) {
    // Column 0 itself, when it is inside, else the run's first column.
    begin_ = end_ = begin <= 0 && end >= 0 ? 0 : begin;
    steps_.push_back({true, 0, static_cast<ptrdiff_t>(begin_), 0, 0});
  }
  while (begin_ != begin || end_ != end) {
    // A step may not exceed what is already there, or it leaves gaps.
    const int64_t most = end_ - begin_ + 1;
    const int64_t down = std::min(begin_ - begin, most);
    const int64_t up = std::min(end - end_, most);
    steps_.push_back({false, static_cast<ptrdiff_t>(down),
                      static_cast<ptrdiff_t>(up), 0, 0});
    begin_ -= down;
    end_ += up;
  }
}

namespace {

// Columns that rows first..last - 1 of the list take up.
struct columns {
  int64_t min;
  int64_t max;
};
columns columns_of(const run_view& source, const row_list& rows, size_t first,
                   size_t last) {
  columns c{INT64_MAX, INT64_MIN};
  for (size_t i = first; i < last; ++i) {
    c.min = std::min<int64_t>(c.min, source.begins[rows.first(i)]);
    c.max = std::max<int64_t>(c.max, source.ends[rows.last(i) - 1]);
  }
  return c;
}

// One band of the result: source rows in, result rows out, in between as many
// result rows as the element is high.
class bit_band {
 public:
  bit_band(const run_view& source, const row_list& rows, const bit_plan& plan,
           int64_t first_row, int64_t last_row, run_buffer* out)
      : source_(source),
        rows_(rows),
        plan_(plan),
        k_(kernels()),
        first_row_(first_row),
        last_row_(last_row),
        out_(out),
        next_(rows.find(first_row - plan.max_row())),
        end_(rows.find(last_row - plan.min_row() + 1)),
        columns_(columns_of(source, rows, next_, end_)),
        origin_(columns_.min - plan.reach_down()),
        words_(words_for(origin_, columns_.max + plan.reach_up())),
        height_(static_cast<size_t>(plan.max_row() - plan.min_row() + 1)),
        loader_(words_, origin_),
        lines_(3, words_,
               static_cast<size_t>(
                   std::max(plan.reach_down(), plan.reach_up()) / 64 + 2)),
        results_(height_, words_),
        states_(height_, state::closed) {}

  void dilate() {
    if (next_ == end_) return;
    for (int64_t row = rows_.row(next_); row <= last_row_ - plan_.min_row();
         ++row) {
      begin_row(row);
      if (next_ < end_ && rows_.row(next_) == row) {
        load(next_++);
        apply(row, k_.spread_or, k_.merge_or);
      }
      finish(row + plan_.min_row());
    }
  }

  void erode() {
    if (next_ == end_) return;
    size_t lead = rows_.find(first_row_ - plan_.longest_row());
    for (int64_t row = first_row_ - plan_.max_row();
         row <= last_row_ - plan_.min_row(); ++row) {
      begin_row(row);
      open_if_possible(row + plan_.max_row(), &lead);
      if (next_ < end_ && rows_.row(next_) == row) {
        if (anything_open(row)) {
          load(next_);
          apply(row, k_.spread_and, k_.merge_and);
        }
        ++next_;
      } else {
        close_all(row);
      }
      finish(row + plan_.min_row());
    }
  }

 private:
  enum class state : unsigned char { closed, open };

  bool in_band(int64_t row) const {
    return row >= first_row_ && row <= last_row_;
  }
  // Where the ring holds a result row that the source row at hand reaches.
  size_t slot(int64_t row) const {
    const size_t s = oldest_slot_ + static_cast<size_t>(row - oldest_);
    return s < height_ ? s : s - height_;
  }
  // On to the next source row: its lowest result row is the oldest.
  void begin_row(int64_t row) {
    oldest_ = row + plan_.min_row();
    if (++oldest_slot_ >= height_) oldest_slot_ = 0;
  }

  // The source row as bits, in line 0.
  void load(size_t i) {
    const size_t first = rows_.first(i);
    loader_.load(source_.begins + first, source_.ends + first,
                 rows_.last(i) - first, lines_.line(0));
  }

  template <typename Spread, typename Merge>
  void apply(int64_t row, Spread spread, Merge merge) {
    const uint64_t* now = lines_.line(0);
    size_t free_line = 1;
    for (const bit_plan::step& s : plan_.steps()) {
      uint64_t* next = lines_.line(free_line);
      if (s.restart && s.up == 0) {
        now = lines_.line(0);
      } else {
        if (s.restart) {
          k_.move(lines_.line(0), next, words_, s.up);
        } else {
          spread(now, next, words_, static_cast<size_t>(s.down),
                 static_cast<size_t>(s.up));
        }
        now = next;
        free_line = 3 - free_line;
      }
      into_.clear();
      for (size_t i = s.first_row; i < s.last_row; ++i) {
        uint64_t* result = result_row(row + plan_.rows()[i]);
        if (result != nullptr) into_.push_back(result);
      }
      if (!into_.empty()) merge(now, into_.data(), into_.size(), words_);
    }
  }

  // Where to merge; null for rows that are not of this band, or lost. Rows of
  // a dilation open when first met.
  uint64_t* result_row(int64_t row) {
    if (!in_band(row)) return nullptr;
    const size_t s = slot(row);
    if (states_[s] == state::closed) {
      if (eroding_) return nullptr;
      states_[s] = state::open;
      std::memset(results_.line(s), 0, words_ * sizeof(uint64_t));
    }
    return results_.line(s);
  }

  // A row of an erosion can hold something only if the element's longest run
  // fits into some source run.
  void open_if_possible(int64_t row, size_t* lead) {
    eroding_ = true;
    if (!in_band(row)) return;
    const int64_t lead_row = row - plan_.longest_row();
    while (rows_.row(*lead) < lead_row) ++*lead;
    if (rows_.row(*lead) != lead_row) return;
    const size_t first = rows_.first(*lead);
    if (!k_.reaches(source_.begins + first, source_.ends + first,
                    rows_.last(*lead) - first, plan_.longest() - 1))
      return;
    states_[slot(row)] = state::open;
    std::memset(results_.line(slot(row)), 0xff, words_ * sizeof(uint64_t));
  }

  bool anything_open(int64_t row) {
    return std::any_of(plan_.rows().begin(), plan_.rows().end(),
                       [&](int64_t step) {
                         return in_band(row + step) &&
                                states_[slot(row + step)] == state::open;
                       });
  }

  // An empty source row: nothing is left of the rows that need it.
  void close_all(int64_t row) {
    for (const int64_t step : plan_.rows()) {
      if (in_band(row + step)) states_[slot(row + step)] = state::closed;
    }
  }

  // No source row after this one matters to `row`: out it goes.
  void finish(int64_t row) {
    if (!in_band(row) || states_[slot(row)] == state::closed) return;
    states_[slot(row)] = state::closed;
    append_runs(results_.line(slot(row)), words_, origin_ + plan_.origin(),
                static_cast<int32_t>(row), out_);
  }

  const run_view& source_;
  const row_list& rows_;
  const bit_plan& plan_;
  const bit_kernels& k_;
  const int64_t first_row_, last_row_;
  run_buffer* const out_;
  size_t next_;
  const size_t end_;
  const columns columns_;
  const int64_t origin_;  // of the source's bits
  const size_t words_;
  const size_t height_;
  bit_loader loader_;
  bit_lines lines_;    // source row, and two to spread between
  bit_lines results_;  // a ring
  std::vector<state> states_;
  std::vector<uint64_t*> into_;
  int64_t oldest_ = 0;
  size_t oldest_slot_ = 0;
  bool eroding_ = false;
};

}  // namespace

void bit_dilate(const run_view& source, const row_list& rows,
                const bit_plan& plan, int64_t first_row, int64_t last_row,
                run_buffer* out) {
  bit_band(source, rows, plan, first_row, last_row, out).dilate();
}

void bit_erode(const run_view& source, const row_list& rows,
               const bit_plan& plan, int64_t first_row, int64_t last_row,
               run_buffer* out) {
  bit_band(source, rows, plan, first_row, last_row, out).erode();
}

}  // namespace vexo::internal

// SPDX-License-Identifier: MIT
#include "region/internal/bit_morphology.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <utility>

#include "region/internal/bit_lines.h"
#include "region/internal/bit_rows.h"
#include "region/internal/bit_window.h"

namespace vexo::internal {
namespace {

// Whether every row from the first to the last has a run that holds the columns
// begin..end.
bool all_rows_hold(const element_runs& element, int64_t first, int64_t last,
                   int64_t begin, int64_t end) {
  auto run = std::lower_bound(
      element.begin(), element.end(), first,
      [](const element_run& r, int64_t row) { return r.row < row; });
  for (int64_t row = first; row <= last; ++row) {
    bool held = false;
    for (; run != element.end() && run->row == row; ++run)
      held = held || (run->begin <= begin && run->end >= end);
    if (!held) return false;
  }
  return true;
}

// How high the window of rows is that have this width or more, where that saves
// something; 0 elsewhere.
size_t window_of(const element_runs& element, const std::vector<int64_t>& rows,
                 int64_t begin, int64_t end) {
  constexpr size_t kMostRows = 8;  // for each that is as wide as that
  const auto height = static_cast<size_t>(rows.back() - rows.front() + 1);
  if (rows.size() <= bit_window::steps(height) ||
      height > kMostRows * rows.size() ||
      !all_rows_hold(element, rows.front(), rows.back(), begin, end))
    return 0;
  return height;
}

}  // namespace

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
    merge_into(rows,
               window_of(element, rows, w.second, w.second + w.first - 1));
    reach_down_ = std::max(reach_down_, -begin);
    reach_up_ = std::max(reach_up_, end);
    longest_ = w.first;
    longest_row_ = rows.front();
  }
}

void bit_plan::merge_into(const std::vector<int64_t>& rows, size_t window) {
  step& s = steps_.back();
  s.first_row = rows_.size();
  rows_.insert(rows_.end(), rows.begin(), rows.end());
  s.last_row = rows_.size();
  s.window = window;
  merges_ += window > 0 ? bit_window::steps(window) : rows.size();
}

void bit_plan::reach_width(int64_t begin, int64_t end) {
  const bool restart = steps_.empty() || begin > begin_ || end < end_;
  if (restart) {
    // Column 0 itself, when it is inside, else the run's first column.
    begin_ = end_ = begin <= 0 && end >= 0 ? 0 : begin;
    steps_.push_back({true, 0, static_cast<ptrdiff_t>(begin_), 0, 0, 0});
  }
  while (begin_ != begin || end_ != end) {
    // A step may not exceed what is already there, or it leaves gaps.
    const int64_t most = end_ - begin_ + 1;
    const int64_t down = std::min(begin_ - begin, most);
    const int64_t up = std::min(end - end_, most);
    steps_.push_back({false, static_cast<ptrdiff_t>(down),
                      static_cast<ptrdiff_t>(up), 0, 0, 0});
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
        lines_(4, words_,
               static_cast<size_t>(
                   std::max(plan.reach_down(), plan.reach_up()) / 64 + 2)),
        results_(height_, words_),
        states_(height_, state::closed),
        into_(plan.rows().size()) {
    for (size_t i = 0; i < 2 * height_; ++i)
      ring_.push_back(results_.line(i % height_));
    for (const bit_plan::step& s : plan.steps())
      if (s.window > 0) windows_.emplace_back(s.window, words_);
  }

  void dilate() {
    if (next_ == end_) return;
    for (int64_t row = rows_.row(next_); row <= last_row_ - plan_.min_row();
         ++row) {
      begin_row(row);
      if (next_ < end_ && rows_.row(next_) == row) {
        load(next_++);
        result_row(row + plan_.max_row());  // opens
        apply(row, k_.spread_or, k_.join_or, k_.merge_or);
      } else {
        apply_nothing(row);
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
        if (open_ > 0) {
          load(next_);
          apply(row, k_.spread_and, k_.join_and, k_.merge_and);
        } else {
          skip();
        }
        ++next_;
      } else {
        close_all(row);
        skip();
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

  template <typename Spread, typename Join, typename Merge>
  void apply(int64_t row, Spread spread, Join join, Merge merge) {
    size_t window = 0;
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
      if (s.window > 0) {
        slide(&windows_[window++], now, row + plan_.rows()[s.first_row], join,
              merge);
        continue;
      }
      const size_t count =
          open_ == height_ ? gather_all(s) : gather_open(s, row);
      if (count > 0) merge(now, into_.data(), count, words_);
    }
  }

  // Fills into_ with the result rows of a step that are open, or that open now,
  // and returns their number. Most of the time all of them are open.
  size_t gather_all(const bit_plan::step& s) {
    uint64_t* const* const oldest = ring_.data() + oldest_slot_;
    size_t count = 0;
    for (size_t i = s.first_row; i < s.last_row; ++i)
      into_[count++] = oldest[plan_.rows()[i] - plan_.min_row()];
    return count;
  }
  size_t gather_open(const bit_plan::step& s, int64_t row) {
    size_t count = 0;
    for (size_t i = s.first_row; i < s.last_row; ++i) {
      uint64_t* const result = result_row(row + plan_.rows()[i]);
      if (result != nullptr) into_[count++] = result;
    }
    return count;
  }

  // A window that reaches from the row at hand up to the lowest result row that
  // this row is merged into: that row gets all of it.
  template <typename Join, typename Merge>
  void slide(bit_window* window, const uint64_t* line, int64_t lowest,
             Join join, Merge merge) {
    window->push(line, join);
    uint64_t* const result = result_row(lowest);
    if (result == nullptr) return;
    merge(window->whole(), &result, 1, words_);
    if (window->earlier() != nullptr)
      merge(window->earlier(), &result, 1, words_);
  }
  // A row without runs, in a dilation.
  void apply_nothing(int64_t row) {
    size_t window = 0;
    for (const bit_plan::step& s : plan_.steps()) {
      if (s.window > 0)
        slide(&windows_[window++], lines_.line(3),
              row + plan_.rows()[s.first_row], k_.join_or, k_.merge_or);
    }
  }
  // A row that no open row of an erosion needs.
  void skip() {
    for (bit_window& w : windows_) w.skip();
  }

  // Where to merge; null for rows that are not of this band, or lost. Rows of
  // a dilation open when first met.
  uint64_t* result_row(int64_t row) {
    if (!in_band(row)) return nullptr;
    const size_t s = slot(row);
    if (states_[s] == state::closed) {
      if (eroding_) return nullptr;
      states_[s] = state::open;
      ++open_;
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
    ++open_;
    std::memset(results_.line(slot(row)), 0xff, words_ * sizeof(uint64_t));
  }

  // An empty source row: nothing is left of the rows that need it.
  void close_all(int64_t row) {
    if (open_ == 0) return;
    for (const int64_t step : plan_.rows()) {
      if (in_band(row + step)) close(slot(row + step));
    }
  }
  void close(size_t s) {
    open_ -= states_[s] == state::open;
    states_[s] = state::closed;
  }

  // No source row after this one matters to `row`: out it goes.
  void finish(int64_t row) {
    if (!in_band(row) || states_[slot(row)] == state::closed) return;
    close(slot(row));
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
  bit_lines lines_;    // source row, two to spread between, one of zeros
  bit_lines results_;  // a ring
  std::vector<uint64_t*> ring_;  // its lines, twice over
  std::vector<state> states_;
  size_t open_ = 0;  // of these
  std::vector<bit_window> windows_;
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

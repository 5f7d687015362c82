// SPDX-License-Identifier: MIT
#include "region/internal/strip_morphology.h"

#include <algorithm>

#include "region/internal/bit_rows.h"

namespace vexo::internal {
namespace {

// Where the background ends on either side.
constexpr int32_t kFar = int32_t{1} << 30;

}  // namespace

element_strip::element_strip(const element_runs& element)
    : first_row(element.front().row) {
  for (size_t i = 0; i < element.size(); ++i) {
    const element_run& run = element[i];
    const bool joins = i == 0 || (run.row == element[i - 1].row + 1 &&
                                  run.begin <= element[i - 1].end &&
                                  run.end >= element[i - 1].begin);
    if (!joins) {
      begins.clear();
      ends.clear();
      return;
    }
    begins.push_back(static_cast<int32_t>(run.begin));
    ends.push_back(static_cast<int32_t>(run.end));
  }
}

strip_band::strip_band(const run_view& source, const row_list& rows, of which,
                       const element_strip& element, int64_t first_row,
                       int64_t last_row)
    : source_(source),
      which_(which),
      element_(element),
      first_row_(first_row),
      last_row_(last_row) {
  const int64_t first_source = first_row - element.last_row();
  const int64_t last_source = last_row - element.first_row;
  size_t i = rows.find(first_source);
  const size_t first_run = rows.first(i);
  const size_t n = rows.first(rows.find(last_source + 1)) - first_run;
  begins_.reserve(n);
  ends_.reserve(n);
  for (int64_t row = first_source; row <= last_source; ++row) {
    if (rows.row(i) == row) {
      add_row(row, rows.first(i), rows.last(i));
      ++i;
    } else if (which_ == of::gaps) {
      add_row(row, 0, 0);
    } else if (rows.row(i) > last_source) {
      break;
    } else {
      row = rows.row(i) - 1;  // on to the next row with runs
    }
  }
  row_firsts_.push_back(begins_.size());
  link_rows();
}

void strip_band::add_row(int64_t row, size_t first, size_t last) {
  row_numbers_.push_back(row);
  row_firsts_.push_back(begins_.size());
  const int32_t* begins = source_.begins;
  const int32_t* ends = source_.ends;
  if (which_ == of::runs) {
    begins_.insert(begins_.end(), begins + first, begins + last);
    ends_.insert(ends_.end(), ends + first, ends + last);
    return;
  }
  begins_.push_back(-kFar);
  for (size_t i = first; i < last; ++i) {
    ends_.push_back(begins[i] - 1);
    begins_.push_back(ends[i] + 1);
  }
  ends_.push_back(kFar);
}

// Every interval continues the strip of one interval of the row above that it
// shares a column with, if one is free, or starts a strip.
void strip_band::link_rows() {
  owners_.resize(begins_.size());
  for (size_t r = 0; r + 1 < row_firsts_.size(); ++r) {
    const int64_t row = row_numbers_[r];
    const bool follows = r > 0 && row_numbers_[r - 1] == row - 1;
    size_t above = follows ? row_firsts_[r - 1] : row_firsts_[r];
    const size_t above_last = row_firsts_[r];
    for (size_t i = row_firsts_[r]; i < row_firsts_[r + 1]; ++i) {
      while (above < above_last && ends_[above] < begins_[i]) ++above;
      if (above < above_last && begins_[above] <= ends_[i]) {
        owners_[i] = owners_[above++];
        ++strips_[owners_[i]].length;
      } else {
        owners_[i] = static_cast<uint32_t>(strips_.size());
        strips_.push_back({row, 1, 0});
      }
    }
  }
}

void strip_band::append_result(run_buffer* out) {
  sort_into_columns();
  dilate_columns();
  for (int64_t row = first_row_; row <= last_row_; ++row) {
    meet_new_fronts(row);
    if (fronts_.empty()) {
      if (next_strip_ == strips_.size()) return;
      row = strips_[next_strip_].first_row - 1;
      continue;
    }
    sort_fronts();
    append_row(row, out);
  }
}

void strip_band::sort_into_columns() {
  size_t offset = 0;
  for (strip& s : strips_) {
    s.offset = offset;
    offset += s.length;
  }
  column_begins_.resize(offset);
  column_ends_.resize(offset);
  for (size_t r = 0; r + 1 < row_firsts_.size(); ++r) {
    for (size_t i = row_firsts_[r]; i < row_firsts_[r + 1]; ++i) {
      const strip& s = strips_[owners_[i]];
      const size_t at =
          s.offset + static_cast<size_t>(row_numbers_[r] - s.first_row);
      column_begins_[at] = begins_[i];
      column_ends_[at] = ends_[i];
    }
  }
}

void strip_band::dilate_columns() {
  const size_t more = element_.height() - 1;
  const size_t total = column_begins_.size() + strips_.size() * more;
  std::vector<int32_t> begins(total, INT32_MAX);
  std::vector<int32_t> ends(total, INT32_MIN);
  const bit_kernels& k = kernels();
  size_t offset = 0;
  for (strip& s : strips_) {
    k.dilate_strip(&column_begins_[s.offset], &column_ends_[s.offset], s.length,
                   element_.begins.data(), element_.ends.data(),
                   element_.height(), &begins[offset], &ends[offset]);
    s.offset = offset;
    s.first_row += element_.first_row;
    s.length += more;
    offset += s.length;
  }
  column_begins_.swap(begins);
  column_ends_.swap(ends);
}

// Strips that begin on this row enter in the order of their columns.
void strip_band::meet_new_fronts(int64_t row) {
  const size_t old = fronts_.size();
  for (; next_strip_ < strips_.size() && strips_[next_strip_].first_row <= row;
       ++next_strip_) {
    const strip& s = strips_[next_strip_];
    const auto skipped = static_cast<size_t>(row - s.first_row);
    if (skipped < s.length)
      fronts_.push_back({0, s.offset + skipped, s.offset + s.length});
  }
  for (front& f : fronts_) f.begin = column_begins_[f.at];
  if (old == fronts_.size() || old == 0) return;
  sort_fronts();
}

// They were in order one row ago, so that little is out of order now.
void strip_band::sort_fronts() {
  for (size_t i = 1; i < fronts_.size(); ++i) {
    if (fronts_[i - 1].begin <= fronts_[i].begin) continue;
    const front moving = fronts_[i];
    size_t to = i;
    for (; to > 0 && fronts_[to - 1].begin > moving.begin; --to)
      fronts_[to] = fronts_[to - 1];
    fronts_[to] = moving;
  }
}

void strip_band::append_row(int64_t row, run_buffer* out) {
  out->ensure(out->size() + fronts_.size() + 1);
  const auto row32 = static_cast<int32_t>(row);
  int32_t begin = fronts_[0].begin;
  int32_t end = INT32_MIN;
  size_t kept = 0;
  end = column_ends_[fronts_[0].at];
  for (size_t i = 0; i < fronts_.size(); ++i) {
    front f = fronts_[i];
    const int32_t f_end = column_ends_[f.at];
    if (f.begin <= end + 1) {
      end = std::max(end, f_end);
    } else {
      if (which_ == of::runs) {
        out->push(row32, begin, end);
      } else {
        out->push(row32, end + 1, f.begin - 1);
      }
      begin = f.begin;
      end = f_end;
    }
    if (++f.at < f.last) fronts_[kept++] = f;
  }
  fronts_.resize(kept);
  if (which_ == of::runs) out->push(row32, begin, end);
}

}  // namespace vexo::internal

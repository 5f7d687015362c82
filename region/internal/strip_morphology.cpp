// SPDX-License-Identifier: MIT
#include "region/internal/strip_morphology.h"

#include <algorithm>
#include <utility>

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
    : which_(which),
      element_(element),
      first_row_(first_row),
      last_row_(last_row),
      begins_(source.begins),
      ends_(source.ends) {
  find_rows(rows);
  link_rows();
}

// The source rows that matter, and their intervals. Runs are numbered from the
// first one that matters.
void strip_band::find_rows(const row_list& rows) {
  const int64_t first = first_row_ - element_.last_row();
  const int64_t last = last_row_ - element_.first_row;
  size_t i = rows.find(first);
  const size_t end = rows.find(last + 1);
  const size_t first_run = rows.first(i);
  begins_ += first_run;
  ends_ += first_run;
  if (which_ == of::runs) {
    spans_.reserve(end - i);
    for (; i < end; ++i)
      spans_.push_back(
          {rows.row(i), rows.first(i) - first_run, rows.last(i) - first_run});
    return;
  }
  const auto height = static_cast<size_t>(last - first + 1);
  spans_.reserve(height);
  gap_begins_.reserve(rows.first(end) - first_run + height);
  gap_ends_.reserve(rows.first(end) - first_run + height);
  for (int64_t row = first; row <= last; ++row) {
    if (rows.row(i) == row) {
      add_gaps(row, rows.first(i) - first_run, rows.last(i) - first_run);
      ++i;
    } else {
      add_gaps(row, 0, 0);
    }
  }
  begins_ = gap_begins_.data();
  ends_ = gap_ends_.data();
}

void strip_band::add_gaps(int64_t row, size_t first, size_t last) {
  const size_t gap = gap_begins_.size();
  gap_begins_.push_back(-kFar);
  for (size_t i = first; i < last; ++i) {
    gap_ends_.push_back(begins_[i] - 1);
    gap_begins_.push_back(ends_[i] + 1);
  }
  gap_ends_.push_back(kFar);
  spans_.push_back({row, gap, gap_begins_.size()});
}

// Every interval continues the strip of one interval of the row above that it
// shares a column with, if one is free, or starts a strip.
void strip_band::link_rows() {
  if (spans_.empty()) return;
  owners_ = buffer<uint32_t>(spans_.back().last);
  row_span above{spans_[0].row - 1, 0, 0};
  for (const row_span& now : spans_) {
    const bool follows = above.row == now.row - 1;
    if (!follows || !continues(above, now)) {
      if (!follows) link(above, {above.row + 1, 0, 0});
      link(follows ? above : row_span{now.row - 1, 0, 0}, now);
    }
    above = now;
  }
  link(above, {above.row + 1, 0, 0});
}

// The usual case: as many intervals as above, each below its like.
bool strip_band::continues(const row_span& above, const row_span& now) {
  const size_t n = now.last - now.first;
  if (above.last - above.first != n) return false;
  for (size_t i = 0; i < n; ++i) {
    if (begins_[now.first + i] > ends_[above.first + i] ||
        ends_[now.first + i] < begins_[above.first + i])
      return false;
  }
  std::copy_n(owners_.data() + above.first, n, owners_.data() + now.first);
  return true;
}

void strip_band::link(const row_span& above, const row_span& now) {
  size_t a = above.first;
  const auto end_strip = [&](size_t interval) {
    strips_[owners_[interval]].last_row = above.row;
  };
  for (size_t i = now.first; i < now.last; ++i) {
    while (a < above.last && ends_[a] < begins_[i]) end_strip(a++);
    if (a < above.last && begins_[a] <= ends_[i]) {
      owners_[i] = owners_[a++];
    } else {
      owners_[i] = static_cast<uint32_t>(strips_.size());
      strips_.push_back({now.row, now.row, 0});
    }
  }
  while (a < above.last) end_strip(a++);
}

void strip_band::append_result(run_buffer* out) {
  if (strips_.empty()) return;
  sort_into_columns();
  dilate_columns();
  next_end_ = INT64_MAX;
  for (int64_t row = first_row_; row <= last_row_; ++row) {
    if (row == next_end_) dismiss(row);
    if (next_strip_ < strips_.size() && strips_[next_strip_].first_row <= row)
      admit(row);
    if (fronts_.empty()) {
      if (next_strip_ == strips_.size()) return;
      row = strips_[next_strip_].first_row - 1;
    } else if (!append_row(row, out)) {
      sort_fronts(fronts_.size(), row);
      append_row(row, out);
    }
  }
}

void strip_band::sort_into_columns() {
  int64_t offset = 0;
  for (strip& s : strips_) {
    s.base = offset - s.first_row;
    offset += s.last_row - s.first_row + 1;
  }
  column_begins_ = buffer<int32_t>(static_cast<size_t>(offset));
  column_ends_ = buffer<int32_t>(static_cast<size_t>(offset));
  for (const row_span& span : spans_) {
    for (size_t i = span.first; i < span.last; ++i) {
      const auto at = static_cast<size_t>(strips_[owners_[i]].base + span.row);
      column_begins_[at] = begins_[i];
      column_ends_[at] = ends_[i];
    }
  }
}

void strip_band::dilate_columns() {
  const auto more = static_cast<int64_t>(element_.height()) - 1;
  const size_t total =
      column_begins_.size() + strips_.size() * static_cast<size_t>(more);
  buffer<int32_t> begins(total);
  buffer<int32_t> ends(total);
  const bit_kernels& k = kernels();
  int64_t offset = 0;
  for (strip& s : strips_) {
    const int64_t length = s.last_row - s.first_row + 1;
    const int64_t from = s.base + s.first_row;
    k.dilate_strip(column_begins_.data() + from, column_ends_.data() + from,
                   static_cast<size_t>(length), element_.begins.data(),
                   element_.ends.data(), element_.height(),
                   begins.data() + offset, ends.data() + offset);
    s.first_row += element_.first_row;
    s.last_row += element_.last_row();
    s.base = offset - s.first_row;
    offset += length + more;
  }
  column_begins_ = std::move(begins);
  column_ends_ = std::move(ends);
}

// Takes in the strips that begin on this row, or before the first one.
void strip_band::admit(int64_t row) {
  const auto begin_of = [&](const strip& s) {
    return column_begins_[static_cast<size_t>(s.base + row)];
  };
  const auto before = [&](const strip& a, const strip& b) {
    return begin_of(a) < begin_of(b);
  };
  const size_t old = fronts_.size();
  for (; next_strip_ < strips_.size() && strips_[next_strip_].first_row <= row;
       ++next_strip_) {
    const strip& s = strips_[next_strip_];
    if (s.last_row < row) continue;
    fronts_.push_back(s);
    next_end_ = std::min(next_end_, s.last_row + 1);
  }
  const auto middle = fronts_.begin() + static_cast<ptrdiff_t>(old);
  // New ones come in order, apart from those that began before the first row.
  if (!std::is_sorted(middle, fronts_.end(), before))
    std::sort(middle, fronts_.end(), before);
  if (old == 0) return;
  sort_fronts(old, row);
  merged_.resize(fronts_.size());
  std::merge(fronts_.begin(), middle, middle, fronts_.end(), merged_.begin(),
             before);
  fronts_.swap(merged_);
}

// Lets go of the strips that ended above this row.
void strip_band::dismiss(int64_t row) {
  next_end_ = INT64_MAX;
  std::erase_if(fronts_, [&](const strip& s) {
    if (s.last_row < row) return true;
    next_end_ = std::min(next_end_, s.last_row + 1);
    return false;
  });
}

// Puts the first n fronts in order. They were so one row ago, so that little is
// out of place now.
void strip_band::sort_fronts(size_t n, int64_t row) {
  const auto begin_of = [&](const strip& s) {
    return column_begins_[static_cast<size_t>(s.base + row)];
  };
  for (size_t i = 1; i < n; ++i) {
    const strip moving = fronts_[i];
    const int32_t begin = begin_of(moving);
    size_t to = i;
    for (; to > 0 && begin_of(fronts_[to - 1]) > begin; --to)
      fronts_[to] = fronts_[to - 1];
    fronts_[to] = moving;
  }
}

// One row of the result. False, and nothing written, when the fronts are out of
// order.
bool strip_band::append_row(int64_t row, run_buffer* out) {
  const size_t n = out->size();
  out->ensure(n + fronts_.size());
  int32_t* begins = out->begins() + n;
  int32_t* ends = out->ends() + n;
  const int32_t* column_begins = column_begins_.data() + row;
  const int32_t* column_ends = column_ends_.data() + row;
  int32_t begin = column_begins[fronts_[0].base];
  int32_t end = column_ends[fronts_[0].base];
  int32_t before = begin;
  size_t written = 0;
  for (const strip& front : fronts_) {
    const int32_t next = column_begins[front.base];
    const int32_t next_end = column_ends[front.base];
    if (next < before) return false;
    before = next;
    if (next <= end + 1) {
      end = std::max(end, next_end);
      continue;
    }
    begins[written] = which_ == of::runs ? begin : end + 1;
    ends[written] = which_ == of::runs ? end : next - 1;
    ++written;
    begin = next;
    end = next_end;
  }
  if (which_ == of::runs) {
    begins[written] = begin;
    ends[written] = end;
    ++written;
  }
  std::fill_n(out->rows() + n, written, static_cast<int32_t>(row));
  out->set_size(n + written);
  return true;
}

}  // namespace vexo::internal

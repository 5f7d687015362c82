// SPDX-License-Identifier: MIT
//
// Union-find on runs.
//
// [1] L. He, Y. Chao, K. Suzuki, A run-based two-scan labeling algorithm, IEEE
//     Transactions on Image Processing 17, 2008.
#include "region/internal/labelling.h"

#include <algorithm>
#include <utility>

#include "region/internal/parallel.h"
#include "region/internal/row_labels.h"
#include "region/internal/row_overlaps.h"
#include "region/internal/union_find.h"

namespace vexo::internal {
namespace {

// Runs below which a band is not worth a thread.
constexpr size_t kBandRuns = 1 << 14;

// The runs first..last - 1, whole rows.
struct run_range {
  size_t first;
  size_t last;

  size_t count() const { return last - first; }
};

// Labels one band of rows. Provisional labels count from the index of the
// band's first run.
class band_labeller {
 public:
  band_labeller(const run_view& runs, int32_t reach, int32_t* labels,
                int32_t* parent)
      : runs_(runs),
        reach_(reach),
        labels_(labels),
        parent_(parent),
        // Runs of a row are two columns apart, so that nothing that reaches a
        // run from above reaches the next one but by reaching over its end.
        count_overlaps_(reach == 0 || reach == 1 ? current_count_overlaps()
                                                 : nullptr) {}

  void label(const run_range& band) {
    next_ = static_cast<int32_t>(band.first);
    run_range above{band.first, band.first};
    for (size_t i = band.first; i < band.last;) {
      const run_range row{i, row_end(runs_, i)};
      const bool follows = above.count() > 0 && is_below(above, row);
      label_row(follows ? above : run_range{i, i}, row);
      above = row;
      i = row.last;
    }
  }

  // Unites what touches across the seam between two rows of different bands.
  void join(const run_range& above, const run_range& row) {
    if (above.count() == 0 || !is_below(above, row)) return;
    find_overlaps(above, row);
    for (size_t i = 0; i < row.count(); ++i) {
      for (size_t k = low_[i]; k < high_[i]; ++k) {
        unite(parent_, labels_[above.first + k], labels_[row.first + i]);
      }
    }
  }

  // One past the last provisional label of the band.
  int32_t end() const { return next_; }

 private:
  bool is_below(const run_range& above, const run_range& row) const {
    return int64_t{runs_.rows[above.first]} + 1 == runs_.rows[row.first];
  }

  intervals intervals_of(const run_range& row) const {
    return {runs_.begins + row.first, runs_.ends + row.first, row.count()};
  }

  void find_overlaps(const run_range& above, const run_range& row) {
    low_.ensure(row.count());
    high_.ensure(row.count());
    if (count_overlaps_ != nullptr) {
      count_overlaps_(intervals_of(above), intervals_of(row), reach_,
                      low_.data(), high_.data());
    } else {
      walk(intervals_of(above), intervals_of(row));
    }
  }

  // For a wider reach: a run above is done with when one below has ended at or
  // behind its end, even if the next one is within reach.
  void walk(const intervals& above, const intervals& row) {
    size_t k = 0;
    for (size_t i = 0; i < row.count; ++i) {
      const int64_t begin = int64_t{row.begins[i]} - reach_;
      const int64_t end = int64_t{row.ends[i]} + reach_;
      while (k < above.count && above.ends[k] < begin) ++k;
      low_[i] = static_cast<uint32_t>(k);
      while (k < above.count && above.begins[k] <= end &&
             above.ends[k] <= row.ends[i]) {
        ++k;
      }
      const bool reaches_on = k < above.count && above.begins[k] <= end;
      high_[i] = static_cast<uint32_t>(reaches_on ? k + 1 : k);
    }
  }

  // Each run takes the label of the first that it touches above, or a new one;
  // what else it touches is united with that afterwards.
  void label_row(const run_range& above, const run_range& row) {
    if (above.count() == 0) {
      for (size_t i = row.first; i < row.last; ++i) {
        labels_[i] = parent_[next_] = next_;
        ++next_;
      }
      return;
    }
    find_overlaps(above, row);
    pairs_.clear(
        row.count() +
        std::max(above.count(), internal::count_contacts(
                                    low_.data(), high_.data(), row.count())));
    next_ = take_labels_({low_.data(), high_.data(), row.count()},
                         labels_ + above.first, next_, labels_ + row.first,
                         parent_, &pairs_);
    for (size_t i = 0; i < pairs_.count; ++i) {
      unite(parent_, pairs_.first[i], pairs_.second[i]);
    }
  }

  const run_view& runs_;
  int32_t reach_;
  int32_t* labels_;
  int32_t* parent_;
  count_overlaps_function count_overlaps_;
  take_labels_function take_labels_ = current_take_labels();
  int32_t next_ = 0;
  buffer<uint32_t> low_, high_;
  label_pairs pairs_;
};

// First run of the row that run i lies in.
size_t row_begin(const run_view& runs, size_t i) {
  const int32_t* const rows = runs.rows;
  return static_cast<size_t>(std::lower_bound(rows, rows + i, rows[i]) - rows);
}

// Whole rows, about the same number of runs for every thread.
buffer<run_range> split(const run_view& runs) {
  const size_t pieces = piece_count(runs.count, kBandRuns);
  buffer<run_range> bands(pieces);
  for (size_t b = 0; b < pieces; ++b) {
    bands[b].first = row_begin(runs, piece_begin(runs.count, pieces, b));
    if (b == 0) continue;
    // Rows out of order must not make bands overlap.
    bands[b].first = std::max(bands[b].first, bands[b - 1].first);
    bands[b - 1].last = bands[b].first;
  }
  bands[pieces - 1].last = runs.count;
  return bands;
}

// The provisional labels that a band has used.
struct label_range {
  int32_t first;
  int32_t last;
};

buffer<label_range> label_bands(const run_view& runs, int32_t reach,
                                int32_t* labels, int32_t* parent) {
  const buffer<run_range> bands = split(runs);
  buffer<label_range> used(bands.size());
  parallel_for(bands.size(), [&](size_t b) {
    band_labeller labeller(runs, reach, labels, parent);
    labeller.label(bands[b]);
    used[b] = {static_cast<int32_t>(bands[b].first), labeller.end()};
  });
  band_labeller seams(runs, reach, labels, parent);
  for (size_t b = 1; b < bands.size(); ++b) {
    const size_t seam = bands[b].first;
    if (seam == bands[b].last || seam == 0) continue;
    seams.join({row_begin(runs, seam - 1), seam}, {seam, row_end(runs, seam)});
  }
  return used;
}

// Turns the roots' parents into component numbers, and all others' as well.
int32_t number_components(const buffer<label_range>& used, int32_t* parent) {
  int32_t next = 0;
  for (const label_range& range : used) {
    for (int32_t i = range.first; i < range.last; ++i) {
      const int32_t to = parent[i];
      const bool is_root = to == i;
      parent[i] = is_root ? next : parent[to];
      next += is_root;
    }
  }
  return next;
}

// Counts the runs of every component in every stream and turns the counts into
// places.
void order_by_component(const int32_t* component_of_label, labelling* all) {
  const auto components = static_cast<size_t>(all->components);
  const size_t runs = all->labels.size();
  // Few enough that their tables take no more than the labels.
  const size_t most = runs / (2 * std::max<size_t>(components, 1));
  all->streams = 2 * std::clamp<size_t>(most, 1, piece_count(runs, kBandRuns));
  all->starts = buffer<uint32_t>(all->streams * components);
  std::fill(all->starts.begin(), all->starts.end(), 0u);
  int32_t* const labels = all->labels.data();
  for_each_run(*all, [&](size_t i, uint32_t* counts) {
    const int32_t component = component_of_label[labels[i]];
    labels[i] = component;
    ++counts[component];
  });
  all->firsts = buffer<uint32_t>(components + 1);
  uint32_t sum = 0;
  for (size_t k = 0; k < components; ++k) {
    all->firsts[k] = sum;
    for (size_t s = 0; s < all->streams; ++s) {
      sum += std::exchange(all->stream(s)[k], sum);
    }
  }
  all->firsts[components] = sum;
}

}  // namespace

labelling label_runs(const run_view& runs, int32_t reach) {
  if (runs.count > kMaxChords) throw_realloc_failed();
  labelling result;
  result.labels = buffer<int32_t>(runs.count);
  buffer<int32_t> parent(runs.count + 1);
  const auto used =
      label_bands(runs, reach, result.labels.data(), parent.data());
  result.components = number_components(used, parent.data());
  order_by_component(parent.data(), &result);
  return result;
}

}  // namespace vexo::internal

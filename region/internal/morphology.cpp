// SPDX-License-Identifier: MIT
#include "region/internal/morphology.h"

#include <algorithm>
#include <atomic>
#include <limits>

#include "region/internal/bit_lines.h"
#include "region/internal/bit_morphology.h"
#include "region/internal/candidate_erosion.h"
#include "region/internal/key_morphology.h"
#include "region/internal/parallel.h"
#include "region/internal/plain_morphology.h"
#include "region/internal/row_list.h"
#include "region/internal/strip_morphology.h"

namespace vexo::internal {
namespace {

// Smallest and largest row and column.
struct extent {
  int64_t min_row, min_col, max_row, max_col;
};

extent extent_of(const run_view& runs) {
  int32_t min_col = INT32_MAX;
  int32_t max_col = INT32_MIN;
  kernels().span(runs.begins, runs.ends, runs.count, &min_col, &max_col);
  return {runs.rows[0], min_col, runs.rows[runs.count - 1], max_col};
}

extent extent_of(const element_runs& element) {
  extent e{element.front().row, INT64_MAX, element.back().row, INT64_MIN};
  for (const element_run& run : element) {
    e.min_col = std::min(e.min_col, run.begin);
    e.max_col = std::max(e.max_col, run.end);
  }
  return e;
}

extent operator+(const extent& a, const extent& b) {
  return {a.min_row + b.min_row, a.min_col + b.min_col, a.max_row + b.max_row,
          a.max_col + b.max_col};
}

bool fits(const extent& e) {
  return e.min_row >= INT32_MIN && e.min_col >= INT32_MIN &&
         e.max_row <= INT32_MAX && e.max_col <= INT32_MAX;
}

// Where sums of two spans of columns stay far from the end of 32 bits.
bool moderate(const extent& e) {
  constexpr int64_t kMost = int64_t{1} << 29;
  return e.max_row - e.min_row < kMost && e.max_col - e.min_col < kMost;
}

struct band {
  int64_t first_row;
  int64_t last_row;
};

// Result rows in bands. A band ends where the source has a gap that no element
// row bridges, or when it is high enough.
std::vector<band> bands_of(const row_list& rows, const extent& element,
                           size_t pieces) {
  const int64_t height = element.max_row - element.min_row + 1;
  const size_t enough = std::max<size_t>(static_cast<size_t>(4 * height), 256);
  const size_t per_band =
      std::max<size_t>(std::min(enough, rows.count() / pieces + 1), 16);
  std::vector<band> bands;
  size_t first = 0;
  for (size_t i = 1; i <= rows.count(); ++i) {
    const bool gap = i < rows.count() && rows.row(i) - rows.row(i - 1) > height;
    if (i < rows.count() && !gap && i - first < per_band) continue;
    const int64_t last_row = rows.row(i - 1) + element.max_row;
    const int64_t next_row =
        i < rows.count() ? rows.row(i) + element.min_row - 1 : last_row;
    bands.push_back(
        {rows.row(first) + element.min_row, std::min(last_row, next_row)});
    first = i;
  }
  return bands;
}

std::atomic<morphology_form> g_form{morphology_form::cheapest};

// One dilation or erosion, band by band.
class morphology {
 public:
  enum class kind { dilation, erosion };

  // The element of an erosion comes mirrored: then both kinds move source rows
  // and columns by the element's.
  morphology(kind what, const run_view& source, const extent& source_extent,
             const row_list& rows, const element_runs& element)
      : what_(what),
        source_(source),
        rows_(rows),
        element_(element),
        plan_(element),
        strip_(element),
        source_extent_(source_extent),
        element_extent_(extent_of(element)) {}

  // Elements that are no strips leave bits or nothing but runs.
  bool better_plain() const {
    const load all = load_of_all();
    const double element_runs = static_cast<double>(plan_.rows().size());
    return !strips_possible() && 8 * all.runs * element_runs < bit_cost(all);
  }

  // In nanoseconds, on one thread.
  double cost() const { return least_cost(load_of_all()); }

  run_buffer run() const {
    const size_t worth = pieces_worth(cost());
    const std::vector<band> bands = bands_of(rows_, element_extent_, worth);
    // One thread appends band after band to one list and copies nothing.
    const size_t pieces = worth == 1 ? 1 : std::min(bands.size(), 4 * worth);
    std::vector<run_buffer> parts(pieces);
    parallel_for(pieces, [&](size_t p) {
      const size_t last = piece_begin(bands.size(), pieces, p + 1);
      for (size_t i = piece_begin(bands.size(), pieces, p); i < last; ++i)
        run(bands[i], &parts[p]);
    });
    return joined(std::move(parts));
  }

 private:
  // Their columns are 32 bits and never overflow.
  bool strips_possible() const {
    constexpr int64_t kMost = int64_t{1} << 29;
    return !strip_.empty() && source_extent_.min_col > -kMost &&
           source_extent_.max_col < kMost && element_extent_.min_col > -kMost &&
           element_extent_.max_col < kMost;
  }

  // The one place where the form of a band is chosen: by estimates in
  // nanoseconds, from runs, rows and words of bits. The factors are measured
  // (bench_morphology); what matters is that they are right within a factor
  // of two. Strips are counted only if they could win.
  void run(const band& b, run_buffer* out) const {
    const morphology_form form = g_form.load(std::memory_order_relaxed);
    if (by_keys(b, form) && append_keys(b, out)) return;
    if (strips_possible() && form != morphology_form::bits) {
      const load l = load_of(b);
      const bool surely = form == morphology_form::strips;
      if (surely || strip_cost(l.runs, likely_strips(l)) < bit_cost(l)) {
        strip_band strips(source_, rows_,
                          what_ == kind::dilation ? strip_band::of::runs
                                                  : strip_band::of::gaps,
                          strip_, b.first_row, b.last_row);
        if (surely || strip_cost(l.runs, static_cast<double>(strips.strips())) <
                          bit_cost(l)) {
          strips.append_result(out);
          return;
        }
      }
    }
    if (what_ == kind::dilation) {
      bit_dilate(source_, rows_, plan_, b.first_row, b.last_row, out);
    } else {
      bit_erode(source_, rows_, plan_, b.first_row, b.last_row, out);
    }
  }

  bool by_keys(const band& b, morphology_form form) const {
    if (!key_morphology::possible(element_)) return false;
    if (form != morphology_form::cheapest) return form == morphology_form::keys;
    const load l = load_of(b);
    return key_cost(l.runs) < bit_cost(l);
  }

  bool append_keys(const band& b, run_buffer* out) const {
    out->ensure(out->size() + static_cast<size_t>(1.25 * load_of(b).runs));
    const key_columns columns{static_cast<int32_t>(source_extent_.min_col),
                              static_cast<int32_t>(source_extent_.max_col)};
    return key_morphology(source_, rows_, element_,
                          what_ == kind::dilation
                              ? key_morphology::of::unions
                              : key_morphology::of::intersections,
                          columns)
        .append(b.first_row, b.last_row, out);
  }

  // A source band: what the costs depend on.
  struct load {
    double runs;
    double rows;
  };
  load load_of_all() const {
    return {static_cast<double>(source_.count),
            static_cast<double>(rows_.count())};
  }
  load load_of(const band& b) const {
    const size_t first = rows_.find(b.first_row - element_extent_.max_row);
    const size_t last = rows_.find(b.last_row - element_extent_.min_row + 1);
    return {static_cast<double>(rows_.first(last) - rows_.first(first)),
            static_cast<double>(last - first)};
  }

  // Of whichever form run() would take.
  double least_cost(const load& l) const {
    double cost = bit_cost(l);
    if (strips_possible())
      cost = std::min(cost, strip_cost(l.runs, likely_strips(l)));
    if (key_morphology::possible(element_))
      cost = std::min(cost, key_cost(l.runs));
    return cost;
  }

  // With vectors, less than that of strips whatever the picture.
  double key_cost(double runs) const {
    return runs * (1 + 1.3 * static_cast<double>(element_.size()));
  }

  // Where rows have few runs these lie under one another.
  static double likely_strips(const load& l) {
    return l.runs / (l.runs < 5 * l.rows ? 20 : 5);
  }

  double strip_cost(double runs, double strips) const {
    const auto height = static_cast<double>(strip_.height());
    return runs * (9 + 0.12 * height) + strips * height * 3.5;
  }

  double bit_cost(const load& l) const {
    const int64_t columns = source_extent_.max_col - source_extent_.min_col +
                            element_extent_.max_col - element_extent_.min_col;
    const auto words = static_cast<double>(words_for(0, columns));
    // Working memory beyond the caches' reach is out of the question.
    constexpr double kMostWords = 1 << 20;
    constexpr double kMostRingWords = 1 << 23;
    const double ring = words * static_cast<double>(element_extent_.max_row -
                                                    element_extent_.min_row);
    if (words > kMostWords || ring > kMostRingWords)
      return std::numeric_limits<double>::infinity();
    const double per_word = 3.5 +
                            0.3 * static_cast<double>(plan_.steps().size()) +
                            0.22 * static_cast<double>(plan_.merges());
    return l.runs + l.rows * (30 + words * per_word);
  }

  const kind what_;
  const run_view& source_;
  const row_list& rows_;
  const element_runs& element_;
  const bit_plan plan_;
  const element_strip strip_;
  const extent source_extent_;
  const extent element_extent_;
};

}  // namespace

namespace {

// No run is as long as the element's longest.
bool nothing_fits(const run_view& source, const element_runs& element) {
  int64_t longest = 0;
  for (const element_run& run : element)
    longest = std::max(longest, run.end - run.begin);
  return !kernels().reaches(source.begins, source.ends, source.count, longest);
}

// The cost of the other forms, as candidates are to see it: elements of few
// runs leave too many candidates, and rows of few runs are strips' own.
double cost_beside_candidates(const element_runs& element, const row_list& rows,
                              size_t runs, double others) {
  constexpr size_t kFewRuns = 12;
  constexpr size_t kFewInARow = 5;
  const morphology_form form = g_form.load();
  if (form == morphology_form::candidates)
    return std::numeric_limits<double>::infinity();
  return form == morphology_form::cheapest && element.size() >= kFewRuns &&
                 runs >= kFewInARow * rows.count()
             ? others
             : 0;
}

}  // namespace

void set_morphology_form(morphology_form form) { g_form.store(form); }

run_buffer dilate(const run_view& runs, const element_runs& element) {
  const canonical_runs canonical(runs);
  const run_view& source = canonical.view();
  if (source.count == 0 || element.empty()) return run_buffer();
  const row_list rows(source);
  const extent from = extent_of(source);
  const extent by = extent_of(element);
  if (!fits(from + by)) throw_realloc_failed();
  if (!moderate(from) || !moderate(by) ||
      g_form.load() == morphology_form::plain)
    return plain_dilate(source, element);
  const morphology work(morphology::kind::dilation, source, from, rows,
                        element);
  return work.better_plain() ? plain_dilate(source, element) : work.run();
}

run_buffer erode(const run_view& runs, const element_runs& element) {
  const canonical_runs canonical(runs);
  const run_view& source = canonical.view();
  if (source.count == 0 || element.empty() || nothing_fits(source, element))
    return run_buffer();
  const row_list rows(source);
  const element_runs mirrored = reflected(element);
  const extent from = extent_of(source);
  const extent by = extent_of(mirrored);
  if (!fits(from + by) || !moderate(from) || !moderate(by) ||
      g_form.load() == morphology_form::plain)
    return plain_erode(source, element);
  const morphology work(morphology::kind::erosion, source, from, rows,
                        mirrored);
  run_buffer result;
  const double others =
      cost_beside_candidates(element, rows, source.count, work.cost());
  if (others > 0 &&
      candidate_erosion(source, rows, element).run(others, &result))
    return result;
  return work.better_plain() ? plain_erode(source, element) : work.run();
}

}  // namespace vexo::internal

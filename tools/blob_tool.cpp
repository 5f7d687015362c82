// SPDX-License-Identifier: MIT
#include "tools/blob_tool.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "region/operations.h"
#include "tools/console_text.h"
#include "tools/elapsed.h"

namespace rendal {
namespace {

using vexo::region;

constexpr int kParallel = 1;
constexpr int kSequential = 0;

// What an operation may read. `element` is empty for operations without one.
struct Operands {
  region& older;
  region& last;
  region& element;
  const char* boundary_type;
};

// How a library function takes its operands.
using Form = void (*)(const Operands& in, region* out);

template <auto operation>
void OnNewest(const Operands& in, region* out) {
  operation(in.last, out);
}

template <auto operation>
void OnBoth(const Operands& in, region* out) {
  operation(in.older, in.last, out);
}

template <auto operation>
void ByElement(const Operands& in, region* out) {
  operation(in.last, in.element, out);
}

// About the middle of the element.
template <auto operation>
void ByCentred(const Operands& in, region* out) {
  operation(in.last, in.element, out, -1, -1);
}

void ByType(const Operands& in, region* out) {
  vexo::boundary(in.last, out, in.boundary_type);
}

// One button: `label` is what PrintElapsed prints, `done` what the status says
// is done, `inputs` how many binarisations it takes.
struct OperationRow {
  RegionOperation operation;
  const char* name;
  const char* label;
  const char* done;
  size_t inputs;
  bool element;
  Form parallel;
  Form sequential;
};

// clang-format off
constexpr OperationRow kOperations[] = {
// operation                       name            label           done          inputs element parallel                      sequential
  {RegionOperation::kFillUp,       "fill_up",      "fill up",      "fill_up",      1, false, OnNewest<vexo::fill_up_y>,     OnNewest<vexo::fill_up>},
  {RegionOperation::kUnion,        "union",        "union2",       "union2",       2, false, OnBoth<vexo::union2_y>,        OnBoth<vexo::union2>},
  {RegionOperation::kDifference,   "difference",   "difference",   "difference",   2, false, OnBoth<vexo::difference_y>,    OnBoth<vexo::difference>},
  {RegionOperation::kIntersection, "intersection", "intersection", "intersection", 2, false, OnBoth<vexo::intersection_y>,  OnBoth<vexo::intersection>},
  {RegionOperation::kDilation,     "dilation",     "dilation1",    "dilation1",    1, true,  ByCentred<vexo::dilation2>,    ByElement<vexo::dilation1>},
  {RegionOperation::kErosion,      "erosion",      "erosion1",     "erosion1",     1, true,  ByCentred<vexo::erosion2>,     ByElement<vexo::erosion1>},
  {RegionOperation::kOpening,      "opening",      "opening",      "opening",      1, true,  ByElement<vexo::opening>,      ByElement<vexo::opening1>},
  {RegionOperation::kClosing,      "closing",      "closing",      "closing",      1, true,  ByElement<vexo::closing>,      ByElement<vexo::closing>},
  {RegionOperation::kTopHat,       "top_hat",      "top_hat",      "top_hat",      1, true,  ByElement<vexo::top_hat>,      ByElement<vexo::top_hat>},
  {RegionOperation::kBottomHat,    "bottom_hat",   "bottom_hat",   "bottom_hat",   1, true,  ByElement<vexo::bottom_hat>,   ByElement<vexo::bottom_hat>},
  {RegionOperation::kBoundary,     "boundary",     "boundary",     "boundary",     1, false, ByType,                        ByType},
};
// clang-format on

const OperationRow& RowOf(RegionOperation operation) {
  return *std::find_if(
      std::begin(kOperations), std::end(kOperations),
      [operation](const OperationRow& r) { return r.operation == operation; });
}

// A result is drawn from its chords; the operations on runs leave none.
void BuildChords(region* r) {
  if (r->run_count > 0 && r->chord_count <= 0) r->to_3();
}

// The inputs of later operations carry both forms, since some operations read
// only runs and some only chords. Must happen before the region is copied:
// copies share their storage.
void BuildBothForms(region* r) {
  BuildChords(r);
  if (r->run_count == 0 && r->chord_count > 0) r->from_3();
}

// The history with `newest` appended and at most two entries kept. Built anew
// by copying: assigning over a region would lose its chords for good.
std::vector<region> Appended(const std::vector<region>& history,
                             const region& newest) {
  std::vector<region> next;
  next.reserve(kHistoryLength + 1);
  const size_t keep = std::min(history.size(), kHistoryLength - 1);
  for (size_t i = history.size() - keep; i < history.size(); ++i) {
    next.push_back(history[i]);
  }
  next.push_back(newest);
  return next;
}

// The last thing a tool does that can throw, so a tool that throws has changed
// nothing. `make_items` makes the overlay.
template <typename MakeItems>
void Show(Workbench& workbench, MakeItems make_items) {
  if (workbench.m_isShown) workbench.m_regionOverlay.Replace(make_items());
  workbench.RequestRedraw();
}

void ShowRegion(Workbench& workbench, std::shared_ptr<region> result) {
  Show(workbench, [&] { return SingleRegionItems(*result); });
  workbench.m_lastRegion = std::move(result);
}

ConnectionReport ShowComponents(Workbench& workbench, ComponentSet components,
                                Status status) {
  ConnectionReport report{std::move(status), std::nullopt};
  if (workbench.m_isShown) {
    report.rows = FeatureRows(components, kMaxFeatureRows);
  }
  Show(workbench, [&] { return ComponentItems(components); });
  workbench.m_components = std::move(components);
  workbench.m_lastRegion = nullptr;
  return report;
}

void RunThreshold(int mode, cv::Mat& image, GrayBand band, region* result) {
  if (mode == kParallel) {
    vexo::threshold_y(image.data, image.cols, image.rows, band.min, band.max,
                      result);
  } else if (mode == kSequential) {
    vexo::threshold(image.data, image.cols, image.rows, band.min, band.max,
                    result);
  }
}

// The number of components; none of a region without runs.
int RunConnection(int mode, region& input, region* result, int neighbours) {
  const int columns_apart = neighbours == 8 ? 1 : 0;
  int count = 0;
  if (mode == kParallel) {
    count = vexo::connection_y(input, result, columns_apart);
  }
  if (mode == kSequential) {
    count = vexo::connection(input, result, columns_apart);
  }
  return std::max(count, 0);
}

// The builders fill runs and chords.
void BuildElement(const ElementChoice& choice, region* element) {
  if (choice.kind == kCross) {
    vexo::gen_se_cross(choice.width, choice.height, element);
  } else if (choice.kind == kRectangle) {
    vexo::gen_se_rectangle(choice.width, choice.height, element);
  } else {
    vexo::gen_se_circle(choice.width, element);
  }
}

Status CheckInputs(const Workbench& workbench, size_t inputs,
                   RegionSource source) {
  if (inputs == 1 && source == RegionSource::kPrevious &&
      (workbench.m_lastRegion || !workbench.m_components.IsNull())) {
    return {};
  }
  const size_t length = workbench.m_regionHistory.size();
  if (length >= inputs) return {};
  return inputs == 2 ? messages::TooFewRegions(workbench.m_language, length)
                     : messages::NoBinarization(workbench.m_language, length);
}

void SetImageSize(int width, int height, region* r) {
  r->width = width;
  r->height = height;
}

// The region that a tool of one input works on, after CheckInputs(). The
// sequential forms need chords.
std::shared_ptr<region> SourceRegion(Workbench& workbench,
                                     RegionSource source) {
  if (source == RegionSource::kBinarisation) {
    return std::make_shared<region>(workbench.m_regionHistory.back());
  }
  if (workbench.m_lastRegion != nullptr) {
    if (workbench.m_parallelMode == kSequential) {
      BuildBothForms(workbench.m_lastRegion.get());
    }
    return workbench.m_lastRegion;
  }
  auto united = std::make_shared<region>();
  workbench.m_components.Unite(united.get());
  SetImageSize(workbench.m_srcImage.cols, workbench.m_srcImage.rows,
               united.get());
  if (workbench.m_parallelMode == kSequential) BuildBothForms(united.get());
  return united;
}

bool LiesIn(const region& r, const cv::Mat& image) {
  bool inside = true;
  ForEachRun(r, [&](int32_t row, int32_t begin, int32_t end) {
    inside &= row >= 0 && row < image.rows && begin >= 0 && end < image.cols;
  });
  return inside;
}

// What of a region lies in the image, in both forms.
std::shared_ptr<region> ClippedTo(const cv::Mat& image, const region& r) {
  auto clipped = std::make_shared<region>();
  clipped->reserve(r.run_count > 0 ? r.run_count
                                   : static_cast<size_t>(r.chord_count));
  ForEachRun(r, [&](int32_t row, int32_t begin, int32_t end) {
    begin = std::max(begin, 0);
    end = std::min(end, image.cols - 1);
    if (row < 0 || row >= image.rows || begin > end) return;
    clipped->rows[clipped->run_count] = row;
    clipped->col_begins[clipped->run_count] = begin;
    clipped->col_ends[clipped->run_count] = end;
    ++clipped->run_count;
  });
  SetImageSize(image.cols, image.rows, clipped.get());
  BuildChords(clipped.get());
  return clipped;
}

}  // namespace

GrayBand ToggleGrayBand(GrayBand band) {
  if (band.min == 0) return {128, 255};
  if (band.max == 255) return {0, 127};
  return band;
}

Status Threshold(Workbench& workbench, GrayBand band) {
  if (!workbench.HasImage()) return {};
  if (band.min > band.max) {
    return messages::BandReversed(workbench.m_language, band.min, band.max);
  }
  cv::Mat image = workbench.ImageWithoutPadding();
  region result;
  int64_t start = SteadyNanoseconds();
  RunThreshold(workbench.m_parallelMode, image, band, &result);
  PrintElapsed(start, "threshold");
  BuildBothForms(&result);
  if (result.chord_count < 1 && !workbench.m_keepsEmptyRegions) {
    return messages::RegionEmpty(workbench.m_language);
  }
  std::vector<region> history = Appended(workbench.m_regionHistory, result);
  Status status = messages::Done(workbench.m_language, "threshold");
  ShowRegion(workbench, std::make_shared<region>(result));
  workbench.m_regionHistory.swap(history);
  return status;
}

ConnectionReport Connection(Workbench& workbench,
                            const ConnectionParameters& parameters) {
  if (Status guard = CheckInputs(workbench, 1, parameters.source);
      guard.tone != Tone::kSilent) {
    return {std::move(guard), std::nullopt};
  }
  std::shared_ptr<region> source = SourceRegion(workbench, parameters.source);
  if (parameters.source == RegionSource::kPrevious &&
      !LiesIn(*source, workbench.m_srcImage)) {
    source = ClippedTo(workbench.m_srcImage, *source);
  }
  auto result = std::make_shared<region>();
  int64_t start = SteadyNanoseconds();
  const int count = RunConnection(workbench.m_parallelMode, *source,
                                  result.get(), parameters.neighbours);
  PrintElapsed(start, "connection");
  ConsolePrintf("connected components = %d\n", count);
  if (workbench.m_isShown) {
    for (int32_t i = 0; i < result->child_count; ++i) {
      BuildChords(result->children[i]);
    }
  }
  return ShowComponents(workbench, ComponentSet(std::move(result)),
                        messages::ConnectionDone(workbench.m_language, count));
}

ConnectionReport SelectComponents(Workbench& workbench,
                                  const Selection& selection) {
  if (workbench.m_components.IsNull()) return {};
  return ShowComponents(
      workbench,
      Selected(workbench.m_components, selection, workbench.m_srcImage.cols,
               workbench.m_srcImage.rows),
      messages::Done(workbench.m_language, "select"));
}

Status ApplyRegionOperation(Workbench& workbench, RegionOperation operation,
                            const OperationParameters& parameters,
                            RegionSource source) {
  const OperationRow& row = RowOf(operation);
  if (Status guard = CheckInputs(workbench, row.inputs, source);
      guard.tone != Tone::kSilent) {
    return guard;
  }
  region element;
  if (row.element) BuildElement(parameters.element, &element);
  // Set operations always take the two newest binarisations.
  if (row.inputs == 2) source = RegionSource::kBinarisation;
  const std::shared_ptr<region> last = SourceRegion(workbench, source);
  const Operands in{workbench.m_regionHistory.front(), *last, element,
                    parameters.boundary_type.c_str()};
  auto result = std::make_shared<region>();
  int64_t start = SteadyNanoseconds();
  if (workbench.m_parallelMode == kParallel) row.parallel(in, result.get());
  if (workbench.m_parallelMode == kSequential) row.sequential(in, result.get());
  PrintElapsed(start, row.label);
  if (workbench.m_isShown) BuildChords(result.get());
  // Set operations say nothing about the image; a closing after one must know.
  if (result->width < 0) SetImageSize(last->width, last->height, result.get());
  Status status = messages::Done(workbench.m_language, row.done);
  ShowRegion(workbench, std::move(result));
  return status;
}

size_t InputsOf(RegionOperation operation) { return RowOf(operation).inputs; }

bool TakesElement(RegionOperation operation) {
  return RowOf(operation).element;
}

std::optional<RegionOperation> OperationByName(std::string_view name) {
  for (const OperationRow& row : kOperations) {
    if (name == row.name) return row.operation;
  }
  return std::nullopt;
}

const char* NameOf(RegionOperation operation) { return RowOf(operation).name; }

}  // namespace rendal

// SPDX-License-Identifier: MIT
//
// What the buttons of the blob group do, without the buttons. Every function
// here checks its guard first, runs one region operation with only that inside
// the timed stretch, replaces the overlay, asks for a redraw and returns what
// the status label has to show. When one throws (out of memory), the workbench
// is as it was before.
//
// Only Threshold adds to the history. The buttons start from the newest
// binarisation (or the two newest), never from what was shown last; recipes and
// the command line can go on from there (RegionSource).
#ifndef RENDAL_TOOLS_BLOB_TOOL_H_
#define RENDAL_TOOLS_BLOB_TOOL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/region_overlay.h"
#include "tools/status.h"
#include "tools/workbench.h"

namespace rendal {

inline constexpr size_t kHistoryLength = 2;

// Grey values min..max, both inclusive.
struct GrayBand {
  int min = 128;
  int max = 255;
  bool operator==(const GrayBand&) const = default;
};

// The band after the down-up button: from the lower end of the range to its
// bright half, else from the upper end to its dark half, else the same.
GrayBand ToggleGrayBand(GrayBand band);

// Index of the structuring-element combo box.
enum ElementKind : int { kCircle = 0, kRectangle = 1, kCross = 2 };

// Structuring element as chosen in the dialog. Any kind but kRectangle and
// kCross is a circle; its radius is `width`, and `height` is not used.
struct ElementChoice {
  int kind = kCircle;
  int width = 3;
  int height = 3;
  bool operator==(const ElementChoice&) const = default;
};

// Whether the height edit means anything (and the width edit is not a radius).
inline bool ElementUsesHeight(int kind) { return kind != kCircle; }

enum class RegionOperation {
  kFillUp,
  kUnion,
  kDifference,
  kIntersection,
  kDilation,
  kErosion,
  kOpening,
  kClosing,
  kTopHat,
  kBottomHat,
  kBoundary,
};

struct OperationParameters {
  ElementChoice element;
  std::string boundary_type = "inner";  // "inner", "inner_filled", "outer"
  bool operator==(const OperationParameters&) const = default;
};

// Binarises the image. Silent without an image. An empty result leaves history
// and overlay alone; otherwise it enters the history, which keeps the two
// newest.
Status Threshold(Workbench& workbench, GrayBand band);

// What a tool starts from.
enum class RegionSource {
  kBinarisation,  // the newest of the history, as the buttons do
  kPrevious,      // what the newest tool left: a region, or the pixels of all
                  // components that a selection kept
};

struct ConnectionParameters {
  int neighbours = 8;  // 8: corners join, too; 4: edges only
  RegionSource source = RegionSource::kBinarisation;
  bool operator==(const ConnectionParameters&) const = default;
};

// Splits a region into its connected components, which become m_components.
// Of a previous result only what lies in the image counts.
struct ConnectionReport {
  Status status;
  // The new rows of the region list; without a value the list stays as it is.
  std::optional<std::vector<FeatureRow>> rows;
};
ConnectionReport Connection(Workbench& workbench,
                            const ConnectionParameters& parameters = {});

// Keeps of m_components what the selection lets through. Silent before the
// first labelling.
ConnectionReport SelectComponents(Workbench& workbench,
                                  const Selection& selection);

// Runs one of the other operations: on the two newest binarisations, older one
// first, for the set operations; on `source` for the rest.
Status ApplyRegionOperation(Workbench& workbench, RegionOperation operation,
                            const OperationParameters& parameters,
                            RegionSource source = RegionSource::kBinarisation);

// How many binarisations an operation takes, and whether it takes a structuring
// element.
size_t InputsOf(RegionOperation operation);
bool TakesElement(RegionOperation operation);

// The operation of that name ("fill_up", "union", ...); none for others.
std::optional<RegionOperation> OperationByName(std::string_view name);
const char* NameOf(RegionOperation operation);

}  // namespace rendal

#endif  // RENDAL_TOOLS_BLOB_TOOL_H_

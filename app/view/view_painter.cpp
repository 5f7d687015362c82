// SPDX-License-Identifier: MIT
#include "app/view/view_painter.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "app/view/axis_map.h"
#include "app/view/highlight_painter.h"
#include "app/view/result_painter.h"
#include "app/view/roi_painter.h"

namespace rendal {
namespace {

constexpr int kChannels = 3;

unsigned char Byte(double component) {
  return cv::saturate_cast<unsigned char>(component);
}

// Writes `count` equal pixels.
void FillPixels(unsigned char* to, int count, const double (&color)[4]) {
  const unsigned char blue = Byte(color[0]);
  const unsigned char green = Byte(color[1]);
  const unsigned char red = Byte(color[2]);
  for (int i = 0; i < count; ++i, to += kChannels) {
    to[0] = blue;
    to[1] = green;
    to[2] = red;
  }
}

// One row of the view, from one row of the image and the overlay's chords of
// that row.
class RowPainter {
 public:
  RowPainter(const Workbench& workbench, const ViewState& view)
      : m_image(workbench.m_srcImage),
        m_overlay(workbench.m_regionOverlay),
        m_columns(AxisMap::Columns(view, 0, view.viewWidth)),
        m_imageBegin(m_columns.FirstAtLeast(0)),
        m_imageEnd(m_columns.FirstAtLeast(workbench.m_srcImage.cols)),
        m_width(view.viewWidth) {}

  void Paint(int image_row, unsigned char* to) const {
    std::memset(to, 0, static_cast<size_t>(m_width) * kChannels);
    if (image_row >= 0 && image_row < m_image.rows) {
      PaintImage(m_image.ptr(image_row), to);
    }
    for (const vexo::chord& chord : m_overlay.Row(image_row)) {
      PaintChord(chord, to);
    }
  }

 private:
  void PaintImage(const unsigned char* from, unsigned char* to) const {
    for (int u = m_imageBegin; u < m_imageEnd; ++u) {
      std::memset(to + u * kChannels, from[m_columns[u]], kChannels);
    }
  }

  void PaintChord(const vexo::chord& chord, unsigned char* to) const {
    if (m_columns.Misses(chord.col_begin, chord.col_end)) return;
    const int begin = m_columns.FirstAtLeast(chord.col_begin);
    const int end = chord.col_end == INT32_MAX
                        ? m_width
                        : m_columns.FirstAtLeast(chord.col_end + 1);
    FillPixels(to + begin * kChannels, end - begin,
               m_overlay[chord.label].color);
  }

  const cv::Mat& m_image;
  const RegionOverlay& m_overlay;
  AxisMap m_columns;
  int m_imageBegin;  // the view columns that show the image
  int m_imageEnd;
  int m_width;
};

void PaintImageAndOverlay(const Workbench& workbench, const ViewState& view,
                          cv::Mat& picture) {
  const RowPainter painter(workbench, view);
  int previous = 0;
  for (int v = 0; v < view.viewHeight; ++v) {
    const int row = view.ImageRow(v);
    // Enlarged, neighbouring view rows show the same image row.
    if (v > 0 && row == previous) {
      std::memcpy(picture.ptr(v), picture.ptr(v - 1),
                  static_cast<size_t>(view.viewWidth) * kChannels);
    } else {
      painter.Paint(row, picture.ptr(v));
    }
    previous = row;
  }
}

ReadOut ReadPixel(const cv::Mat& image, const ViewState& view) {
  ReadOut result{view.ImageColumn(view.hoverX), view.ImageRow(view.hoverY), 0};
  if (result.column >= 0 && result.column < image.cols && result.row >= 0 &&
      result.row < image.rows) {
    result.grey = image.at<unsigned char>(result.row, result.column);
  }
  return result;
}

}  // namespace

std::string FormatReadOut(const ReadOut& read_out) {
  return std::to_string(read_out.column) + ", " + std::to_string(read_out.row) +
         ", " + std::to_string(read_out.grey);
}

std::optional<ReadOut> RefreshView(Workbench& workbench, const ViewState& view,
                                   cv::Mat* picture) {
  if (workbench.m_redraw < 1 || !workbench.HasImage()) return std::nullopt;
  picture->create(view.viewHeight, view.viewWidth, CV_8UC3);
  PaintImageAndOverlay(workbench, view, *picture);
  DrawHighlight(workbench.m_components, view, *picture);
  if (const RoiShape* shape = workbench.CurrentShape()) {
    DrawRoi(*shape, workbench.m_bandWidth, view, *picture);
  }
  if (workbench.m_hideResults == 0) {
    for (const Result& result : workbench.m_results) {
      DrawResult(result, view, *picture);
    }
  }
  workbench.m_redraw = -workbench.m_redraw;
  return ReadPixel(workbench.m_srcImage, view);
}

}  // namespace rendal

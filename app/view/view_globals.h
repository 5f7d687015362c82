// SPDX-License-Identifier: MIT
//
// The program's one view, and the names by which the dialog's code speaks of
// its parts. Everything below app/ takes a ViewState instead.
#ifndef RENDAL_APP_VIEW_VIEW_GLOBALS_H_
#define RENDAL_APP_VIEW_VIEW_GLOBALS_H_

#include "app/view/view_state.h"

namespace rendal {

inline ViewState g_view;

inline float& g_zoom = g_view.zoom;
inline float& g_fitZoom = g_view.fitZoom;
inline float& g_minZoom = g_view.minZoom;
inline float& g_offsetX = g_view.offsetX;
inline float& g_offsetY = g_view.offsetY;
inline int32_t& g_viewWidth = g_view.viewWidth;
inline int32_t& g_viewHeight = g_view.viewHeight;
inline int32_t& g_pointerX = g_view.pointerX;
inline int32_t& g_pointerY = g_view.pointerY;
inline int32_t& g_hoverX = g_view.hoverX;
inline int32_t& g_hoverY = g_view.hoverY;
inline bool& g_dragging = g_view.dragging;
inline int32_t& g_grabbed = g_view.grabbed;

}  // namespace rendal

#endif  // RENDAL_APP_VIEW_VIEW_GLOBALS_H_

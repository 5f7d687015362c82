// SPDX-License-Identifier: MIT
//
// Texts, rectangles and drawing objects: what needs no window.
#include <afxwin.h>
#include <gtest/gtest.h>

#include <string>

#include "mfc/detail/handle_maps.h"
#include "tests/windows/dialogs.h"
#include "tests/windows/gui_objects.h"

namespace {

TEST(MfcString, FormatsLikeTheWidePrintf) {
  CString text;
  text.Format(L"%d-%02d-%02d %s %.2f %c", 2024, 3, 7, L"\u6d4b", 1.005, L'x');
  EXPECT_EQ(text, L"2024-03-07 \u6d4b 1.00 x");
}

TEST(MfcString, FormatMayUseItsOwnText) {
  CString text(L"ab");
  text.Format(L"[%s%s]", text.GetString(), text.GetString());
  EXPECT_EQ(text, L"[abab]");
}

TEST(MfcString, FormatTakesLongTexts) {
  const CString part(L'\u4e2d', 20000);
  CString text;
  text.Format(L"<%s>", part.GetString());
  EXPECT_EQ(text.GetLength(), 20002);
  EXPECT_EQ(text.Mid(1, 20000), part);
}

TEST(MfcString, ConvertsBetweenWidths) {
  const CStringA narrow(L"part 7");
  EXPECT_STREQ(narrow, "part 7");
  EXPECT_EQ(CString(narrow), L"part 7");
  EXPECT_TRUE(CString(static_cast<const char*>(nullptr)).IsEmpty());
}

TEST(MfcString, NullIsEmpty) {
  EXPECT_TRUE(CString(static_cast<LPCTSTR>(nullptr)).IsEmpty());
}

TEST(MfcString, PartsAreCutToWhatThereIs) {
  const CString text(L"abcdef");
  EXPECT_EQ(text.Left(2), L"ab");
  EXPECT_EQ(text.Left(99), L"abcdef");
  EXPECT_EQ(text.Right(2), L"ef");
  EXPECT_EQ(text.Right(-1), L"");
  EXPECT_EQ(text.Mid(2), L"cdef");
  EXPECT_EQ(text.Mid(4, 99), L"ef");
  EXPECT_EQ(text.Mid(99, 1), L"");
  EXPECT_EQ(text.Mid(-3, 2), L"ab");
}

TEST(MfcString, Finds) {
  const CString text(L"a|b|c");
  EXPECT_EQ(text.Find(L'|'), 1);
  EXPECT_EQ(text.Find(L'|', 2), 3);
  EXPECT_EQ(text.Find(L"|c"), 3);
  EXPECT_EQ(text.Find(L"x"), -1);
  EXPECT_EQ(text.ReverseFind(L'|'), 3);
  EXPECT_EQ(text.ReverseFind(L'x'), -1);
}

TEST(MfcString, Joins) {
  CString text = CString(L"ab") + L"c" + CString(L"d");
  text += L'e';
  text += L"f";
  EXPECT_EQ(text, L"abcdef");
  EXPECT_EQ(L"x" + text, L"xabcdef");
  EXPECT_EQ(text[5], L'f');
}

TEST(MfcString, BufferIsCutAtItsTerminatorOrLength) {
  CString text;
  ::lstrcpyW(text.GetBuffer(10), L"abc");
  text.ReleaseBuffer();
  EXPECT_EQ(text.GetLength(), 3);
  text.GetBuffer(10);
  text.ReleaseBuffer(2);
  EXPECT_EQ(text, L"ab");
}

TEST(MfcString, LoadsResourcesOrIsEmpty) {
  CString text;
  EXPECT_TRUE(text.LoadString(IDS_GREETING));
  EXPECT_EQ(text, L"\u5173\u4e8e Rendal(&A)...");
  EXPECT_FALSE(text.LoadString(4711));
  EXPECT_TRUE(text.IsEmpty());
}

TEST(MfcTypes, PackedCoordinatesAreSigned) {
  EXPECT_EQ(CPoint(static_cast<LPARAM>(MAKELPARAM(-7, 300))), CPoint(-7, 300));
}

TEST(MfcTypes, RectanglesMeasureAndMove) {
  CRect rect(10, 20, 110, 70);
  EXPECT_EQ(rect.Size(), CSize(100, 50));
  EXPECT_EQ(rect.CenterPoint(), CPoint(60, 45));
  EXPECT_TRUE(rect.PtInRect(rect.TopLeft()));
  EXPECT_FALSE(rect.PtInRect(rect.BottomRight()));
  rect.DeflateRect(10, 5);
  rect.OffsetRect(-20, 0);
  EXPECT_EQ(rect, CRect(0, 25, 80, 65));
  EXPECT_EQ(rect, CRect(CPoint(0, 25), CSize(80, 40)));
  rect.SetRect(5, 5, 5, 9);
  EXPECT_TRUE(rect.IsRectEmpty());
}

class MfcDrawing : public ::testing::Test {
 protected:
  MfcDrawing() {
    m_dc.CreateCompatibleDC(nullptr);
    CClientDC screen(CWnd::GetDesktopWindow());
    m_bitmap.CreateCompatibleBitmap(&screen, 60, 40);
    m_oldBitmap = m_dc.SelectObject(&m_bitmap);
  }
  ~MfcDrawing() override {
    m_dc.SelectObject(m_oldBitmap);
    m_dc.DeleteDC();
    m_bitmap.DeleteObject();
    AfxLockTempMaps();
    AfxUnlockTempMaps(TRUE);
    EXPECT_EQ(GdiObjectMap().PermanentCount(), 0u);
    EXPECT_EQ(GdiObjectMap().TemporaryCount(), 0u);
    EXPECT_EQ(DeviceContextMap().PermanentCount(), 0u);
  }

  CDC m_dc;
  CBitmap m_bitmap;
  CBitmap* m_oldBitmap = nullptr;
};

TEST_F(MfcDrawing, SelectingReturnsWhatWasSelectedBefore) {
  CFont font;
  LOGFONT description{};
  description.lfHeight = -20;
  font.CreateFontIndirect(&description);
  CFont* old_font = m_dc.SelectObject(&font);
  ASSERT_NE(old_font, nullptr);
  EXPECT_EQ(m_dc.SelectObject(old_font), &font);
  CBrush brush(RGB(1, 2, 3));
  CBrush* old_brush = m_dc.SelectObject(&brush);
  EXPECT_EQ(m_dc.SelectObject(old_brush), &brush);
  CPen pen(PS_SOLID, 1, RGB(4, 5, 6));
  CPen* old_pen = m_dc.SelectObject(&pen);
  EXPECT_EQ(m_dc.SelectObject(old_pen), &pen);
}

TEST_F(MfcDrawing, FillsAndCopies) {
  m_dc.FillSolidRect(CRect(0, 0, 60, 40), RGB(255, 255, 255));
  CBrush brush(RGB(10, 20, 30));
  m_dc.FillRect(CRect(10, 10, 20, 20), &brush);
  m_dc.BitBlt(30, 10, 10, 10, &m_dc, 10, 10, SRCCOPY);
  EXPECT_EQ(m_dc.GetPixel(9, 10), RGB(255, 255, 255));
  EXPECT_EQ(m_dc.GetPixel(10, 10), RGB(10, 20, 30));
  EXPECT_EQ(m_dc.GetPixel(39, 19), RGB(10, 20, 30));
  EXPECT_EQ(m_dc.GetPixel(40, 19), RGB(255, 255, 255));
}

TEST_F(MfcDrawing, TextTakesTheRoomItSays) {
  const CSize size = m_dc.GetTextExtent(L"HH");
  EXPECT_GT(size.cx, 4);
  CRect area(0, 0, 60, 40);
  const int height = m_dc.DrawText(L"HH", area, DT_CALCRECT | DT_SINGLELINE);
  EXPECT_EQ(height, size.cy);
  EXPECT_EQ(area.Width(), size.cx);
}

TEST_F(MfcDrawing, OwnersFreeWhatTheyOwn) {
  const auto round = [this](int i) {
    CFont font;
    font.CreateFont(10 + i % 20, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE,
                    DEFAULT_CHARSET, 0, 0, 0, 0, L"Arial");
    CBrush brush(RGB(i, 0, 0));
    CPen pen(PS_SOLID, 1, RGB(0, i, 0));
    CDC dc;
    dc.CreateCompatibleDC(&m_dc);
    CMenu menu;
    menu.CreatePopupMenu();
  };
  for (int i = 0; i < 3; ++i) round(i);
  const size_t before = LiveGdiObjects();
  for (int i = 0; i < 100; ++i) round(i);
  EXPECT_EQ(LiveGdiObjects(), before);
}

TEST_F(MfcDrawing, DetachedHandleOutlivesItsObject) {
  HGDIOBJ handle = nullptr;
  {
    CBrush brush(RGB(7, 8, 9));
    handle = brush.Detach();
    EXPECT_FALSE(brush.DeleteObject());
  }
  LOGBRUSH description{};
  EXPECT_NE(::GetObject(handle, sizeof(description), &description), 0);
  EXPECT_EQ(description.lbColor, RGB(7, 8, 9));
  ::DeleteObject(handle);
}

TEST_F(MfcDrawing, ReusedHandleOfAnotherClassGetsItsOwnTemporary) {
  const auto stock = static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH));
  EXPECT_NE(CBrush::FromHandle(stock), nullptr);
  EXPECT_EQ(CBrush::FromHandle(stock), CBrush::FromHandle(stock));
  EXPECT_EQ(CFont::FromHandle(reinterpret_cast<HFONT>(stock)), nullptr);
  EXPECT_EQ(CFont::FromHandle(nullptr), nullptr);
}

}  // namespace

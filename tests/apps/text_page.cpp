#include "tests/apps/text_page.h"

#include <pango/pangocairo.h>

#include <array>
#include <memory>

namespace tarqo::textpage {
namespace {

constexpr const char* kSans = "DejaVu Sans";
constexpr const char* kBold = "DejaVu Sans Bold";
constexpr const char* kMono = "DejaVu Sans Mono";
constexpr const char* kKorean = "NanumGothic";
constexpr const char* kKoreanBold = "NanumGothic Bold";
constexpr int kLinesInAColumn = 20;

struct PageLine {
  const char* font;
  int sizePx;
  const char* text;
};

constexpr std::array<PageLine, 40> kLines = {{
    {kBold, 28, "Network settings"},
    {kSans, 16, "Choose how this computer connects to the internet."},
    {kSans, 14, "Wired connection is active and uses automatic addresses."},
    {kSans, 14, "Last checked today at 14:35 by the system service"},
    {kKorean, 18, "네트워크 연결 상태를 확인하고 있습니다"},
    {kKorean, 16, "무선 신호가 약하면 공유기 가까이로 이동하세요"},
    {kKorean, 14, "자동으로 연결하지 않으려면 이 항목을 끄십시오"},
    {kSans, 20, "Download speed: 84 megabits per second"},
    {kSans, 15, "Cancel the transfer before closing the window"},
    {kKoreanBold, 24, "새 문서 만들기"},
    {kKorean, 15, "파일을 저장할 위치를 선택해 주세요"},
    {kKorean, 20, "변경한 내용을 저장하지 않고 닫을까요?"},
    {kSans, 18, "Save changes to the document before closing?"},
    {kMono, 16, "error: cannot open file report.txt"},
    {kMono, 14, "warning: 3 tests failed and 127 tests passed"},
    {kKorean, 16, "받은 편지함에 읽지 않은 메일 12통이 있습니다"},
    {kSans, 22, "Inbox with 12 unread messages"},
    {kKorean, 22, "오늘 오후 세 시에 회의가 있습니다"},
    {kSans, 16, "Meeting with the design team at three o'clock"},
    {kKorean, 14, "참석자 전원에게 알림을 보냈습니다"},
    {kKoreanBold, 28, "결제 정보 입력"},
    {kKorean, 18, "카드 번호와 유효 기간을 입력하세요"},
    {kSans, 18, "Enter the card number and expiry date"},
    {kSans, 14, "Your order will be delivered within two working days."},
    {kKorean, 14, "주문하신 상품은 내일 오전에 도착할 예정입니다"},
    {kKorean, 16, "배송지 주소를 다시 한번 확인해 주시기 바랍니다"},
    {kSans, 24, "Total amount: $248.50"},
    {kKorean, 20, "할인 쿠폰을 사용할 수 있습니다"},
    {kSans, 15, "Remember this computer for thirty days"},
    {kKorean, 15, "비밀번호를 잊으셨나요?"},
    {kBold, 16, "Privacy and security"},
    {kSans, 14, "Only people you choose can see your profile picture."},
    {kKorean, 24, "음악 재생 목록"},
    {kSans, 20, "Playing track 7 of 15 from the library"},
    {kKorean, 18, "다음 곡으로 넘어가려면 화면을 누르세요"},
    {kSans, 16, "Volume is set to 65 percent"},
    {kKorean, 16, "소리가 들리지 않으면 스피커를 확인하세요"},
    {kSans, 14, "Press the space bar to pause or continue"},
    {kKorean, 14, "전체 화면에서 나가려면 아무 키나 누르십시오"},
    {kSans, 18, "Update available: restart the player"},
}};

/// The lines from here on stand on the dark panel.
constexpr std::size_t kFirstLightLine = 32;
constexpr int kMarginPx = 20;
constexpr int kColumnPx = kWidthPx / 2;

struct Unref {
  void operator()(PangoLayout* layout) const { g_object_unref(layout); }
};
using LayoutPtr = std::unique_ptr<PangoLayout, Unref>;

LayoutPtr layoutOf(cairo_t* cairo, const Line& line) {
  LayoutPtr layout(pango_cairo_create_layout(cairo));
  PangoFontDescription* font = pango_font_description_from_string(line.font);
  pango_font_description_set_absolute_size(font, line.sizePx * PANGO_SCALE);
  pango_layout_set_font_description(layout.get(), font);
  pango_font_description_free(font);
  pango_layout_set_text(layout.get(), line.text.c_str(), -1);
  return layout;
}

int stepPx(const Line& line) { return line.sizePx * 8 / 5 + 4; }

/// From the top of the first light line to the end of its column.
void drawPanel(cairo_t* cairo, std::span<const Line> lines) {
  if (lines.size() <= kFirstLightLine) {
    return;
  }
  int y = kMarginPx;
  for (std::size_t i = kLinesInAColumn; i < kFirstLightLine; ++i) {
    y += stepPx(lines[i]);
  }
  cairo_set_source_rgb(cairo, 0.14, 0.16, 0.20);
  cairo_rectangle(cairo, kColumnPx, y - 6, kColumnPx, kHeightPx - y + 6);
  cairo_fill(cairo);
}

}  // namespace

std::vector<Line> pageLines() {
  std::vector<Line> lines;
  lines.reserve(kLines.size());
  for (const PageLine& line : kLines) {
    lines.push_back({line.font, line.sizePx, line.text});
  }
  return lines;
}

std::vector<DrawnLine> draw(cairo_t* cairo, std::span<const Line> lines, double scale) {
  std::vector<DrawnLine> drawn;
  cairo_save(cairo);
  cairo_scale(cairo, scale, scale);
  cairo_set_source_rgb(cairo, 1, 1, 1);
  cairo_paint(cairo);
  drawPanel(cairo, lines);
  int y = kMarginPx;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i == kLinesInAColumn) {
      y = kMarginPx;
    }
    const int x = kMarginPx + (i < kLinesInAColumn ? 0 : kColumnPx);
    const double grey = i < kFirstLightLine ? 0.12 : 0.92;
    cairo_set_source_rgb(cairo, grey, grey, grey);
    cairo_move_to(cairo, x, y);
    const LayoutPtr layout = layoutOf(cairo, lines[i]);
    pango_cairo_show_layout(cairo, layout.get());
    PangoRectangle ink;
    pango_layout_get_pixel_extents(layout.get(), &ink, nullptr);
    drawn.push_back({lines[i].text, x + ink.x, y + ink.y, ink.width, ink.height});
    y += stepPx(lines[i]);
  }
  cairo_restore(cairo);
  return drawn;
}

}  // namespace tarqo::textpage

#include "ui/qtextdialog.h"

#include "ui/qapp.h"
#include "ui/qfont.h"
#include "ui/qtextfit.h"

#include <algorithm>
#include <sstream>

namespace {

constexpr int BUTTON_WID = 100;
constexpr int BUTTON_HGT = 35;

constexpr int TEXT_Y = 48;
constexpr int TEXT_MARGIN = 10;
constexpr int BUTTON_ROOM = 48; // from the text's end to the lower edge
constexpr int MOST_LINES = 10;  // of a label
constexpr size_t MOST_BYTES = 1000;

std::string Wrapped(std::string_view text, int wid)
{
  return QWrapText(*app->GetSystemFont(), text, wid - 2 * TEXT_MARGIN, true);
}

int LineCount(const std::string& lines)
{
  return 1 + static_cast<int>(std::count(lines.begin(), lines.end(), '\n'));
}

// As wide and high as the message needs to stand clear of the buttons, within the owner.
QRect GrownFor(const QWindow* owner, QRect area, std::string_view text)
{
  const int widest = std::max(owner ? owner->rect.wid - 40 : area.wid, area.wid);
  std::string lines = Wrapped(text, area.wid);
  while (LineCount(lines) > MOST_LINES && area.wid < widest) {
    const int wider = std::min(area.wid + 100, widest);
    const std::string fewer = Wrapped(text, wider);
    if (LineCount(fewer) == LineCount(lines))
      break; // its own line ends make it long
    area.wid = wider;
    lines = fewer;
  }
  const int height = static_cast<int>(app->GetSystemFont()->GetHeight(lines.c_str()));
  area.hgt = std::max(area.hgt, TEXT_Y + height + BUTTON_ROOM);
  if (owner)
    area.hgt = std::min(area.hgt, std::max(owner->rect.hgt - 40, 2 * BUTTON_ROOM + TEXT_Y));
  return area;
}

QRect OkRect(const QRect& area, int style)
{
  const int x = style == QTextDialog::OK_ONLY ? (area.wid - BUTTON_WID) / 2 : 12;
  return {x, area.hgt - 40, BUTTON_WID, BUTTON_HGT};
}

} // namespace

QTextDialog::QTextDialog(QWindow* owner, const QRect& area, std::string_view title, std::string_view text, int style) :
    QDialog(owner, GrownFor(owner, area, text), title), message(text),
    ok(this, OkRect(rect, style), app->GetText("misc.ok", "OK"))
{
  AddLabels();
  ok.SetShortcut(QKEY_ENTER);
  if (style == OK_ONLY)
    return;
  cancel = std::make_unique<QButton>(this, QRect{rect.wid - 110, rect.hgt - 40, BUTTON_WID, BUTTON_HGT},
                                     app->GetText("misc.cancel", "Cancel"));
  cancel->SetShortcut(QKEY_ESC);
}

// A label takes a limited text; what is longer goes into several, and what even the whole window can't hold ends in
// dots.
void QTextDialog::AddLabels()
{
  const int wid = rect.wid - 2 * TEXT_MARGIN;
  const int room = rect.hgt - TEXT_Y - BUTTON_ROOM;
  std::string lines = Wrapped(message, rect.wid);
  if (LineCount(lines) <= MOST_LINES && lines.size() <= MOST_BYTES) {
    labels.push_back(std::make_unique<QLabel>(this, QRect{TEXT_MARGIN, TEXT_Y, wid, room}, message));
    return;
  }
  const int height = std::max(static_cast<int>(app->GetSystemFont()->GetHeight()), 1);
  int y = TEXT_Y;
  std::istringstream source(lines);
  std::string block, line;
  int count = 0;
  const auto add = [&] {
    labels.push_back(std::make_unique<QLabel>(this, QRect{TEXT_MARGIN, y, wid, count * height}, block));
    y += count * height;
    count = 0;
    block.clear();
  };
  while (std::getline(source, line)) {
    const bool last = y + (count + 2) * height > TEXT_Y + room && source.peek() != EOF;
    block += (count++ > 0 ? "\n" : "") + (last ? "..." : line);
    if (count == MOST_LINES || block.size() + line.size() > MOST_BYTES || last)
      add();
    if (last)
      return;
  }
  if (count > 0)
    add();
}

void QTextDialog::Filter(QEvent* event)
{
  const int key = event->type == QEvent::KEYPRESS ? QKeyOf(event->n) : 0;
  if (event->type == QEvent::CLOSE || (event->type == QEvent::CLICK && cancel && event->win == cancel.get()))
    result = 2;
  else if ((event->type == QEvent::CLICK && event->win == &ok) || key == QKEY_ENTER || key == 300 ||
           (key == QKEY_ESC && !cancel))
    result = 1;
}

int QTextDialog::Execute()
{
  result = -1;
  app->GetWindowManager()->SetKeyboardFocus(&ok);
  return RunModal([this](QEvent* event) { Filter(event); }, result);
}

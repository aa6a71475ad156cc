#include "ui/qfilelistbox.h"

#include "foundation/qdate.h"
#include "ui/qapp.h"
#include "ui/qfont.h"
#include "ui/qtextfit.h"

#include <array>

namespace {

constexpr uint32_t DOUBLE_CLICK_TIME = 300; // milliseconds

// As short as it can be read: "812 B", "9.4 MB", "120 MB".
std::string SizeText(int64_t bytes)
{
  constexpr std::array<const char*, 5> UNITS = {" B", " KB", " MB", " GB", " TB"};
  size_t unit = 0;
  int64_t tenths = bytes * 10;
  while (tenths >= 10240 && unit + 1 < UNITS.size()) {
    tenths /= 1024;
    ++unit;
  }
  std::string text = std::to_string(tenths / 10);
  if (unit > 0 && tenths < 100)
    text += '.' + std::to_string(tenths % 10);
  return text + UNITS[unit];
}

} // namespace

QFileListBox::QFileListBox(QWindow* owner, const QRect& area, const QFileList& shown, uint32_t wanted) :
    QListBox(owner, area, wanted), entries(shown)
{}

// The bar is left free even when there is none, so that the columns stay where they are.
QRect QFileListBox::EntryRect(int i) const
{
  const int hgt = GetItemHeight();
  return {2, 2 + (i - GetFirst()) * hgt, rect.wid - 4 - QScrollBar::THICKNESS, hgt};
}

void QFileListBox::Refill()
{
  Empty();
  const int room = EntryRect(0).wid - SIZE_WID - DATE_WID - 10;
  for (const QFileEntry& entry : entries.Entries())
    AddString(QShortenText(*GetFont(), entry.name + (entry.isDirectory && entry.name != ".." ? "/" : ""), room));
  pointedAt = false;
  Invalidate();
}

void QFileListBox::IgnoreDoubleClick()
{
  ignoreUntil = static_cast<uint32_t>(app->GetDisplay().Clock()) + DOUBLE_CLICK_TIME;
}

bool QFileListBox::IsIgnored(uint32_t time) const
{
  return ignoreUntil != 0 && static_cast<int32_t>(ignoreUntil - time) >= 0;
}

bool QFileListBox::Event(QEvent* event)
{
  if (event->win == this && event->type == QEvent::DOUBLECLICK && event->n == 1) {
    if (ItemAt(event->x, event->y) >= 0 && !IsIgnored(event->p) && onActivate)
      onActivate();
    return true;
  }
  return QListBox::Event(event);
}

bool QFileListBox::EvButtonPress(int button, int x, int y)
{
  if (button == 1 && IsIgnored(app->GetEvent().p))
    return true;
  pointedAt = true;
  return QListBox::EvButtonPress(button, x, y);
}

bool QFileListBox::EvKeyPress(int key, int x, int y)
{
  pointedAt = false;
  if (key == QKEY_ENTER && onActivate)
    onActivate();
  else if (key == QKEY_BACKSPACE && onParent)
    onParent();
  else
    return QListBox::EvKeyPress(key, x, y);
  return true;
}

void QFileListBox::PaintItem(int i)
{
  QListBox::PaintItem(i);
  if (i < 0 || i >= static_cast<int>(entries.Entries().size()))
    return;
  const QFileEntry& entry = entries.Entries()[static_cast<size_t>(i)];
  if (entry.name == "..")
    return;
  const QRect row = EntryRect(i);
  const auto paintColumn = [&](const std::string& column, int right) {
    cv.Text(column, row.x + row.wid - 6 - right - static_cast<int>(GetFont()->GetWidth(column)), row.y + 2);
  };
  cv.SetFont(GetFont());
  const Item* item = GetItem(i);
  cv.SetColor(item && item->flags & SELECTED ? PX_WHITE : PX_PALETEAL);
  if (entry.modifyTime != 0)
    paintColumn(QDate(entry.modifyTime).Format("%Y-%m-%d %H:%M"), 0);
  if (!entry.isDirectory)
    paintColumn(SizeText(entry.size), DATE_WID);
}

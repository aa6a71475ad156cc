#include "ui/qlistbox.h"

#include "foundation/qreport.h"
#include "ui/qapp.h"
#include "ui/qfont.h"
#include "ui/qtext.h"
#include "ui/qtextfit.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int BORDER = 2;
constexpr int MARGIN = 5;             // before and behind a text
constexpr int64_t SEARCH_TIME = 1000; // milliseconds after which typing begins a new word

QRect BarRect(const QRect& area)
{
  return {area.wid - QScrollBar::THICKNESS - 1, 1, QScrollBar::THICKNESS, area.hgt - 2};
}

} // namespace

QListBox::QListBox(QWindow* owner, const QRect& area, uint32_t wanted) : QControl(owner, area, {}), listFlags(wanted)
{
  mergeMotion = true;
  Start(true);
  bar = std::make_unique<QScrollBar>(this, BarRect(area));
  UpdateBar();
}

std::string QListBox::GetText() const
{
  const int i = GetFirstSelected();
  return i < 0 ? std::string() : items[static_cast<size_t>(i)].text;
}

int QListBox::GetItemHeight() const
{
  return std::max(static_cast<int>(GetFont()->GetHeight()), 10) + 4;
}

int QListBox::GetVisibleLines() const
{
  return std::max((rect.hgt - 2 * BORDER) / GetItemHeight(), 1);
}

QListBox::Item* QListBox::GetItem(int i)
{
  return InRange(i) ? &items[static_cast<size_t>(i)] : nullptr;
}

void QListBox::AddString(std::string_view newText, void* data)
{
  InsertItem(GetItemCount(), newText, data);
}

bool QListBox::InsertItem(int pos, std::string_view newText, void* data)
{
  if (pos < 0 || pos > GetItemCount()) {
    QWARN("QListBox:InsertItem(pos %d) pos out of range 0..%d", pos, GetItemCount());
    return false;
  }
  Item item;
  item.text = newText;
  item.userData = data;
  items.insert(items.begin() + pos, std::move(item));
  cursor += cursor >= pos;
  hover += hover >= pos;
  UpdateBar();
  return true;
}

bool QListBox::RemoveItem(int i)
{
  if (!InRange(i))
    return false;
  SetHover(-1);
  items.erase(items.begin() + i);
  cursor = std::min(cursor - (cursor > i), GetItemCount() - 1);
  UpdateBar();
  SetFirst(first);
  return true;
}

void QListBox::Empty()
{
  items.clear();
  hover = cursor = -1;
  first = 0;
  UpdateBar();
}

void QListBox::UpdateBar()
{
  const int lines = GetVisibleLines();
  bar->SetLines(GetItemCount(), lines);
  const bool wanted = GetItemCount() > lines;
  if (wanted != !(bar->flags & HIDDEN))
    wanted ? bar->Show() : bar->Hide();
  Invalidate();
}

void QListBox::SetFirst(int i)
{
  first = std::clamp(i, 0, std::max(GetItemCount() - GetVisibleLines(), 0));
  bar->SetPosition(first);
  Invalidate();
}

void QListBox::SetItemVisible(int i)
{
  if (!InRange(i)) {
    QWARN("QListBox:SetItemVisibile(%d) out of range 0..%d", i, GetItemCount() - 1);
    return;
  }
  if (i < first)
    SetFirst(i);
  else if (i >= first + GetVisibleLines())
    SetFirst(i - GetVisibleLines() + 1);
}

int QListBox::GetNextSelected(int after) const
{
  for (int i = std::max(after, -1) + 1; i < GetItemCount(); ++i)
    if (items[static_cast<size_t>(i)].flags & SELECTED)
      return i;
  return -1;
}

void QListBox::Select(int i, bool on)
{
  Select(i, on, 0);
}

void QListBox::Select(int i, bool on, int key)
{
  if (listFlags & NO_SELECT)
    return;
  if (!InRange(i)) {
    QWARN("QListBox:Select(%d) out of range 0..%d", i, GetItemCount() - 1);
    return;
  }
  Item& item = items[static_cast<size_t>(i)];
  if (!on) {
    item.flags &= ~static_cast<uint32_t>(SELECTED);
    Invalidate();
    return;
  }
  cursor = i;
  if (item.flags & SELECTED)
    return;
  if (!(listFlags & MULTI_SELECT))
    for (Item& other : items)
      other.flags &= ~static_cast<uint32_t>(SELECTED);
  item.flags |= SELECTED;
  SendEvent(QEvent::CLICK, key);
  Invalidate();
}

void QListBox::SelectByKey(int i, int key)
{
  if (items.empty())
    return;
  i = std::clamp(i, 0, GetItemCount() - 1);
  if (listFlags & MULTI_SELECT) // the keys move one selection, as without the flag
    for (Item& other : items)
      other.flags &= ~static_cast<uint32_t>(SELECTED);
  Select(i, true, key);
  SetItemVisible(i);
}

int QListBox::ItemAt(int x, int y) const
{
  const int line = y - BORDER;
  const int right = bar->IsVisible() ? rect.wid - QScrollBar::THICKNESS - 1 : rect.wid;
  if (x < 0 || x >= right || line < 0 || line / GetItemHeight() >= GetVisibleLines())
    return -1;
  const int i = first + line / GetItemHeight();
  return InRange(i) ? i : -1;
}

bool QListBox::Event(QEvent* event)
{
  if (event->win == bar.get() && (event->type == QEvent::CLICK || event->type == QEvent::SLIDE)) {
    SetFirst(bar->GetPosition());
    return true;
  }
  if (event->type == QEvent::WHEEL) {
    SetFirst(first + (event->n > 0 ? -1 : 1));
    EvMotionNotify(event->x, event->y);
    return true;
  }
  if (event->type == QEvent::KEYPRESS && event->text > ' ' && !(event->n & (QMOD_CTRL | QMOD_ALT)) &&
      Search(event->text))
    return true;
  return QControl::Event(event);
}

bool QListBox::EvButtonPress(int button, int x, int y)
{
  if (button != 1)
    return false;
  app->GetWindowManager()->SetKeyboardFocus(this);
  const int i = ItemAt(x, y);
  if (i < 0)
    return true;
  Item& item = items[static_cast<size_t>(i)];
  const bool toggled = listFlags & MULTI_SELECT && app->GetModifiers() & QMOD_CTRL && item.flags & SELECTED;
  item.flags &= ~static_cast<uint32_t>(SELECTED);
  if (!toggled)
    Select(i);
  else
    SendEvent(QEvent::CLICK);
  Invalidate();
  return true;
}

void QListBox::SetHover(int i)
{
  if (i == hover)
    return;
  for (const int changed : {std::exchange(hover, i), i})
    if (Item* item = GetItem(changed))
      item->flags = changed == i ? item->flags | HOVER : item->flags & ~static_cast<uint32_t>(HOVER);
  Invalidate();
}

bool QListBox::EvMotionNotify(int x, int y)
{
  if (!(listFlags & NO_HOVER))
    SetHover(ItemAt(x, y));
  return false;
}

bool QListBox::EvLeave(QEvent*)
{
  SetHover(-1);
  return false;
}

bool QListBox::EvKeyPress(int key, int x, int y)
{
  const int page = std::max(GetVisibleLines() - 1, 1);
  switch (key) {
  case QKEY_UP:
    SelectByKey(cursor - 1, key);
    return true;
  case QKEY_DOWN:
    SelectByKey(cursor + 1, key);
    return true;
  case QKEY_PGUP:
    SelectByKey(cursor - page, key);
    return true;
  case QKEY_PGDN:
    SelectByKey(cursor + page, key);
    return true;
  case QKEY_HOME:
    SelectByKey(0, key);
    return true;
  case QKEY_END:
    SelectByKey(GetItemCount() - 1, key);
    return true;
  default:
    return QControl::EvKeyPress(key, x, y);
  }
}

// The same letter again goes to the next item; more letters narrow the search.
bool QListBox::Search(char32_t c)
{
  const int64_t now = app->GetDisplay().Clock();
  if (now - searchedAt > SEARCH_TIME)
    searched.clear();
  searchedAt = now;
  std::string letter;
  QAppendChar(letter, c);
  const bool again = searched == letter;
  if (!again)
    searched += letter;
  const int count = GetItemCount();
  const int from = std::max(cursor, 0) + (again || searched == letter ? cursor >= 0 : 0);
  for (int i = 0; i < count; ++i) {
    const int at = (from + i) % count;
    if (!QBeginsWith(items[static_cast<size_t>(at)].text, searched))
      continue;
    SelectByKey(at, static_cast<int>(c));
    return true;
  }
  return false;
}

int QListBox::TextWidth() const
{
  return rect.wid - 2 * BORDER - 2 * MARGIN - (bar->IsVisible() ? QScrollBar::THICKNESS : 0);
}

void QListBox::PaintItem(int i)
{
  const Item* item = GetItem(i);
  if (!item || i < first || i >= first + GetVisibleLines())
    return;
  const int hgt = GetItemHeight();
  const int y = BORDER + (i - first) * hgt;
  const int wid = rect.wid - 2 * BORDER - (bar->IsVisible() ? QScrollBar::THICKNESS - 1 : 0);
  const bool selected = item->flags & SELECTED;
  cv.SetBlending(true);
  if (selected || item->flags & HOVER) {
    cv.SetColor(PX_FACE, selected ? (HasFocus() ? 255 : 190) : 90);
    cv.Rectfill(BORDER, y, wid, hgt);
  }
  int x = BORDER + MARGIN;
  if (item->image) {
    cv.SetColor(PX_WHITE);
    PaintTexture(item->image, item->imageSource, x, y + (hgt - item->imageSource.hgt) / 2);
    x += item->imageSource.wid + MARGIN;
  }
  QFont* f = GetFont();
  cv.SetFont(f);
  cv.SetColor(255, 255, 255, IsEnabled() ? (selected ? 255 : 225) : 110);
  cv.Text(QCutText(*f, item->text, TextWidth() - (x - BORDER - MARGIN)), x, y + 2);
}

void QListBox::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  cv.Begin();
  cv.SetBlending(true);
  cv.SetColor(22, 30, 33, IsEnabled() ? 235 : 150);
  cv.Rectfill(0, 0, rect.wid, rect.hgt);
  cv.SetClipRect(1, 1, rect.wid - 2, rect.hgt - 2);
  for (int i = first; i < std::min(first + GetVisibleLines(), GetItemCount()); ++i)
    PaintItem(i);
  cv.DisableClipping();
  if (HasFocus())
    cv.SetColor(PX_FOCUS);
  else
    cv.SetColor(PX_FACE, 128);
  cv.Rectangle(0, 0, rect.wid, rect.hgt);
  cv.End();
}

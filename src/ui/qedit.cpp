#include "ui/qedit.h"

#include "foundation/qreport.h"
#include "ui/qapp.h"
#include "ui/qfont.h"
#include "ui/qscrollbar.h"
#include "ui/qtext.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int MARGIN = 5;        // pixels between edge and text
constexpr int CARET_BLINK = 500; // milliseconds

bool IsWordChar(char c)
{
  const auto byte = static_cast<unsigned char>(c);
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || byte >= 0x80;
}

// Cut between two characters, not inside one.
std::string_view CutTo(std::string_view text, size_t size)
{
  if (text.size() <= size)
    return text;
  size_t end = 0;
  for (size_t next = 0; next < text.size(); end = next) {
    QNextChar(text, next);
    if (next > size)
      break;
  }
  return text.substr(0, end);
}

} // namespace

QEdit::QEdit(QWindow* owner, const QRect& area, size_t maximum, uint32_t wanted, std::string_view content) :
    QControl(owner, area, CutTo(content, maximum)), editFlags(wanted), maxSize(maximum)
{
  if (const int height = static_cast<int>(GetFont()->GetHeight()); !IsMultiLine() && height > 0)
    rect.hgt = relPos.hgt = height + 8;
  cursor = anchor = text.size();
  Start(true);
  if (IsMultiLine() && editFlags & SCROLLBAR)
    bar = std::make_unique<QScrollBar>(
        this, QRect{rect.wid - QScrollBar::THICKNESS - 1, 1, QScrollBar::THICKNESS, rect.hgt - 2});
  KeepCursorVisible();
}

QEdit::~QEdit() = default;

void QEdit::TextChanged()
{
  lineIndex.clear();
  Invalidate();
}

// What is typed letter by letter is undone as a whole.
void QEdit::Remember(size_t at, std::string_view removed, std::string_view inserted)
{
  constexpr size_t MOST = 1000;
  redo.clear();
  if (joinsNext && removed.empty() && !undo.empty() && undo.back().at + undo.back().inserted.size() == at) {
    undo.back().inserted += inserted;
    return;
  }
  if (undo.size() == MOST)
    undo.erase(undo.begin());
  undo.push_back({at, std::string(removed), std::string(inserted)});
}

void QEdit::Replace(size_t begin, size_t end, std::string_view more)
{
  more = CutTo(more, maxSize - std::min(maxSize, text.size() - (end - begin)));
  if (begin == end && more.empty())
    return;
  Remember(begin, std::string_view(text).substr(begin, end - begin), more);
  text.replace(begin, end - begin, more);
  TextChanged();
  MoveTo(begin + more.size(), false);
}

bool QEdit::Undo()
{
  if (undo.empty())
    return false;
  const Change change = std::move(undo.back());
  undo.pop_back();
  text.replace(change.at, change.inserted.size(), change.removed);
  redo.push_back(change);
  TextChanged();
  MoveTo(change.at + change.removed.size(), false);
  return true;
}

bool QEdit::Redo()
{
  if (redo.empty())
    return false;
  const Change change = std::move(redo.back());
  redo.pop_back();
  text.replace(change.at, change.removed.size(), change.inserted);
  undo.push_back(change);
  TextChanged();
  MoveTo(change.at + change.inserted.size(), false);
  return true;
}

void QEdit::SetText(std::string_view content)
{
  text = CutTo(content, maxSize);
  TextChanged();
  undo.clear();
  redo.clear();
  cursor = anchor = text.size();
  scrollX = 0;
  firstLine = 0;
  KeepCursorVisible();
  Invalidate();
}

void QEdit::SelectAll()
{
  anchor = 0;
  cursor = text.size();
  KeepCursorVisible();
  Invalidate();
}

void QEdit::Deselect()
{
  anchor = cursor;
  Invalidate();
}

std::string QEdit::GetSelectedText() const
{
  return text.substr(SelectionBegin(), SelectionEnd() - SelectionBegin());
}

void QEdit::Cut()
{
  Copy();
  DeleteSelection();
}

void QEdit::Copy()
{
  if (HasSelection())
    app->GetDisplay().SetClipboard(GetSelectedText());
}

void QEdit::Paste()
{
  std::string more;
  const std::string board = app->GetDisplay().Clipboard();
  for (const char c : board) {
    if (c == '\n' && !IsMultiLine())
      break;
    if (static_cast<unsigned char>(c) >= 32 || c == '\n')
      more += c;
  }
  Replace(SelectionBegin(), SelectionEnd(), more);
}

void QEdit::Goto(size_t position)
{
  MoveTo(std::min(position, text.size()), false);
}

bool QEdit::Find(std::string_view wanted, bool caseDependent)
{
  constexpr size_t LONGEST = 1023;
  if (wanted.size() > LONGEST) {
    QWARN("QEdit:Find(); find string too big");
    return false;
  }
  const auto lower = [](std::string s) {
    for (char& c : s)
      c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    return s;
  };
  const size_t at = caseDependent ? text.find(wanted, cursor) : lower(text).find(lower(std::string(wanted)), cursor);
  if (wanted.empty() || at == std::string::npos)
    return false;
  anchor = at;
  cursor = at + wanted.size();
  KeepCursorVisible();
  Invalidate();
  return true;
}

const std::vector<QEdit::Line>& QEdit::Lines() const
{
  if (!lineIndex.empty())
    return lineIndex;
  for (size_t begin = 0;;) {
    const size_t end = IsMultiLine() ? text.find('\n', begin) : std::string::npos;
    lineIndex.push_back({begin, std::min(end, text.size())});
    if (end == std::string::npos)
      return lineIndex;
    begin = end + 1;
  }
}

size_t QEdit::LineOf(const std::vector<Line>& lines, size_t position) const
{
  const auto behind = std::upper_bound(lines.begin() + 1, lines.end(), position,
                                       [](size_t at, const Line& line) { return at < line.begin; });
  return static_cast<size_t>(behind - lines.begin()) - 1;
}

int QEdit::GetCursorX() const
{
  const auto& lines = Lines();
  int n = 0;
  for (size_t at = lines[LineOf(lines, cursor)].begin; at < cursor; ++n)
    QNextChar(text, at);
  return n;
}

int QEdit::GetCursorY() const
{
  return static_cast<int>(LineOf(Lines(), cursor));
}

void QEdit::MoveTo(size_t position, bool select)
{
  joinsNext = false;
  cursor = position;
  if (!select)
    anchor = cursor;
  KeepCursorVisible();
  Invalidate();
}

size_t QEdit::WordStep(bool forward) const
{
  size_t at = cursor;
  const auto behind = [&](bool word) {
    while (at > 0 && IsWordChar(text[at - 1]) == word)
      --at;
  };
  const auto ahead = [&](bool word) {
    while (at < text.size() && IsWordChar(text[at]) == word)
      ++at;
  };
  if (forward) {
    ahead(true);
    ahead(false);
  } else {
    behind(false);
    behind(true);
  }
  return at;
}

size_t QEdit::EmptyLine(bool forward) const
{
  const auto& lines = Lines();
  for (size_t i = LineOf(lines, cursor); forward ? ++i < lines.size() : i-- > 0;)
    if (lines[i].begin == lines[i].end)
      return lines[i].begin;
  return forward ? text.size() : 0;
}

void QEdit::MoveByLines(int count, bool select)
{
  const auto& lines = Lines();
  const auto last = static_cast<int>(lines.size()) - 1;
  const int from = static_cast<int>(LineOf(lines, cursor));
  const Line& target = lines[static_cast<size_t>(std::clamp(from + count, 0, last))];
  size_t at = target.begin;
  if (column < 0)
    column = GetCursorX();
  for (int x = column; x > 0 && at < target.end; --x)
    QNextChar(text, at);
  MoveTo(at, select);
}

// True when the key moves the cursor.
bool QEdit::MoveKey(int key, bool shift, bool ctrl)
{
  const auto& lines = Lines();
  const size_t line = LineOf(lines, cursor);
  const int page = VisibleLines();
  const bool drops = HasSelection() && !shift; // left and up only drop the selection
  switch (key) {
  case QKEY_LEFT:
    MoveTo(ctrl ? WordStep(false) : drops ? SelectionEnd() : QPreviousChar(text, cursor), shift);
    return true;
  case QKEY_RIGHT: {
    size_t next = cursor;
    if (next < text.size())
      QNextChar(text, next);
    MoveTo(ctrl ? WordStep(true) : next, shift);
    return true;
  }
  case QKEY_UP:
    if (drops)
      MoveTo(SelectionEnd(), false);
    ctrl ? MoveTo(EmptyLine(false), shift) : MoveByLines(-1, shift);
    return IsMultiLine();
  case QKEY_DOWN:
    ctrl ? MoveTo(EmptyLine(true), shift) : MoveByLines(1, shift);
    return IsMultiLine();
  case QKEY_HOME:
    MoveTo(ctrl ? 0 : lines[line].begin, shift);
    return true;
  case QKEY_END:
    MoveTo(ctrl ? text.size() : lines[line].end, shift);
    return true;
  case QKEY_PGUP:
    MoveByLines(line > firstLine ? static_cast<int>(firstLine) - static_cast<int>(line) : -page, shift);
    return IsMultiLine();
  case QKEY_PGDN: {
    const size_t lastVisible = firstLine + static_cast<size_t>(page) - 1;
    MoveByLines(line < lastVisible ? static_cast<int>(lastVisible) - static_cast<int>(line) : page, shift);
    return IsMultiLine();
  }
  default:
    return false;
  }
}

void QEdit::DeleteSelection()
{
  Replace(SelectionBegin(), SelectionEnd(), {});
}

void QEdit::Insert(std::string_view more)
{
  Replace(SelectionBegin(), SelectionEnd(), more);
}

// The blanks that the line of the cursor begins with, as far as the cursor.
std::string QEdit::Indentation() const
{
  if (!(editFlags & AUTO_INDENT))
    return {};
  const auto& lines = Lines();
  const size_t begin = lines[LineOf(lines, SelectionBegin())].begin;
  size_t end = begin;
  while (end < SelectionBegin() && text[end] == ' ')
    ++end;
  return text.substr(begin, end - begin);
}

bool QEdit::MayOverwrite() const
{
  if (!(editFlags & OVERWRITE) || cursor >= text.size() || text[cursor] == '\n')
    return false;
  const char under = text[cursor];
  return !(under == '.' && editFlags & STOP_AT_DOT) && !(under == ':' && editFlags & STOP_AT_COLON) &&
         !(under == '-' && editFlags & STOP_AT_MINUS);
}

bool QEdit::TypeCharacter(char32_t c)
{
  if (c < 32 || c == 127)
    return false;
  if (!HasSelection() && MayOverwrite())
    QNextChar(text, anchor);
  const auto& lines = Lines();
  const size_t begin = lines[LineOf(lines, SelectionBegin())].begin;
  if (editFlags & SMART_INDENT && c == '}' && !HasSelection() && cursor >= begin + 2 &&
      text.compare(cursor - 2, 2, "  ") == 0)
    anchor = cursor - 2;
  std::string one;
  QAppendChar(one, c);
  const bool first = editFlags & SMART_INDENT && c == '#' && !HasSelection() && begin < cursor &&
                     text.find_first_not_of(' ', begin) >= cursor;
  if (first)
    anchor = begin;
  Insert(one);
  joinsNext = true;
  return true;
}

// True when the key changes the text or goes by the clipboard.
bool QEdit::EditKey(int key, bool ctrl)
{
  if (ctrl && (key == 'C' || key == QKEY_INSERT)) {
    Copy();
    return true;
  }
  if (ctrl && key == 'A') {
    SelectAll();
    return true;
  }
  if (editFlags & READ_ONLY)
    return false;
  const bool joins = std::exchange(joinsNext, false);
  if (ctrl && key == 'Z') {
    Undo();
  } else if (ctrl && key == 'Y') {
    Redo();
  } else if (ctrl && key == 'X') {
    Cut();
  } else if (ctrl && key == 'V') {
    Paste();
  } else if (key == QKEY_BACKSPACE || key == QKEY_DELETE) {
    if (!HasSelection()) {
      if (ctrl)
        anchor = WordStep(key == QKEY_DELETE);
      else if (key == QKEY_BACKSPACE)
        anchor = QPreviousChar(text, cursor);
      else if (cursor < text.size())
        QNextChar(text, anchor);
    }
    DeleteSelection();
  } else if (key == QKEY_ENTER && IsMultiLine()) {
    Insert("\n" + Indentation());
  } else if (key == QKEY_TAB) {
    Insert("  ");
  } else {
    joinsNext = joins;
    return TypeCharacter(typed);
  }
  return true;
}

bool QEdit::Event(QEvent* event)
{
  if (event->type == QEvent::DOUBLECLICK && event->n == 1 && IsEnabled()) {
    anchor = cursor;
    while (anchor > 0 && IsWordChar(text[anchor - 1]))
      --anchor;
    while (cursor < text.size() && IsWordChar(text[cursor]))
      ++cursor;
    selecting = false;
    Invalidate();
    return true;
  }
  if (bar && event->win == bar.get() && (event->type == QEvent::CLICK || event->type == QEvent::SLIDE)) {
    ScrollTo(bar->GetPosition());
    return true;
  }
  if (event->type == QEvent::WHEEL && IsMultiLine()) {
    ScrollTo(static_cast<int>(firstLine) + (event->n > 0 ? -3 : 3));
    return true;
  }
  typed = event->type == QEvent::KEYPRESS ? event->text : 0;
  return QControl::Event(event);
}

// The cursor stays where it is, out of sight if need be.
void QEdit::ScrollTo(int line)
{
  const int last = static_cast<int>(Lines().size()) - VisibleLines();
  firstLine = static_cast<size_t>(std::clamp(line, 0, std::max(last, 0)));
  if (bar)
    bar->SetPosition(static_cast<int>(firstLine));
  Invalidate();
}

int QEdit::BarWidth() const
{
  return bar ? QScrollBar::THICKNESS : 0;
}

bool QEdit::EvKeyPress(int key, int x, int y)
{
  const int plain = QKeyOf(key);
  const bool leaves = plain == QKEY_TAB && (!(editFlags & TAKES_TAB) || key != QKEY_TAB);
  if (!IsEnabled() || QIsModifierKey(plain) || leaves)
    return QControl::EvKeyPress(key, x, y);
  caretSince = app->GetDisplay().Clock();
  if (plain != QKEY_UP && plain != QKEY_DOWN && plain != QKEY_PGUP && plain != QKEY_PGDN)
    column = -1;
  const bool ctrl = key & QMOD_CTRL;
  if (plain == QKEY_ENTER && !IsMultiLine()) {
    SendEvent(QEvent::CLICK, key);
    return editFlags & EATS_ENTER;
  }
  return (!(key & QMOD_ALT) && MoveKey(plain, key & QMOD_SHIFT, ctrl)) || EditKey(plain, ctrl) ||
         QControl::EvKeyPress(key, x, y);
}

bool QEdit::EvButtonPress(int button, int x, int y)
{
  if (button != 1 || !IsEnabled())
    return false;
  app->GetWindowManager()->SetKeyboardFocus(this);
  caretSince = app->GetDisplay().Clock();
  column = -1;
  MoveTo(PositionAt(x, y), app->GetModifiers() & QMOD_SHIFT);
  selecting = true;
  GrabPointer();
  return true;
}

bool QEdit::EvMotionNotify(int x, int y)
{
  if (!selecting)
    return false;
  MoveTo(PositionAt(x, y), true);
  return true;
}

bool QEdit::EvButtonRelease(int button, int, int)
{
  if (button != 1)
    return false;
  selecting = false;
  ReleasePointer();
  return true;
}

bool QEdit::EvEnter(QEvent*)
{
  app->GetDisplay().SetPointerShape(QPointerShape::TEXT);
  return false;
}

bool QEdit::EvLeave(QEvent*)
{
  app->GetDisplay().SetPointerShape(QPointerShape::ARROW);
  return false;
}

int QEdit::VisibleLines() const
{
  const int height = static_cast<int>(GetFont()->GetHeight());
  return height > 0 ? std::max(1, (rect.hgt - 8) / height) : 1;
}

// The place between two characters that is nearest to the point.
size_t QEdit::PositionAt(int x, int y) const
{
  const QFont& f = *GetFont();
  const auto& lines = Lines();
  const int height = static_cast<int>(f.GetHeight());
  const int row = height > 0 && IsMultiLine() ? (y - 4) / height + static_cast<int>(firstLine) : 0;
  const Line& line = lines[static_cast<size_t>(std::clamp(row, 0, static_cast<int>(lines.size()) - 1))];
  const auto wanted = static_cast<float>(x - MARGIN + scrollX);
  float pen = 0;
  for (size_t at = line.begin; at < line.end;) {
    const size_t before = at;
    QNextChar(text, at);
    const float advance = f.GetWidth(std::string_view(text).substr(before, at - before));
    if (pen + advance / 2 > wanted)
      return before;
    pen += advance;
  }
  return line.end;
}

void QEdit::KeepCursorVisible()
{
  const auto& lines = Lines();
  const size_t line = LineOf(lines, cursor);
  const std::string_view before(text.data() + lines[line].begin, cursor - lines[line].begin);
  const int pen = static_cast<int>(GetFont()->GetWidth(before));
  const int room = std::max(rect.wid - 2 * MARGIN - 1 - BarWidth(), 0);
  scrollX = std::clamp(scrollX, std::max(0, pen - room), pen);
  const auto visible = static_cast<size_t>(VisibleLines());
  firstLine = std::clamp(firstLine, line + 1 > visible ? line + 1 - visible : 0, line);
  if (bar) {
    bar->SetLines(static_cast<int>(lines.size()), static_cast<int>(visible));
    bar->SetPosition(static_cast<int>(firstLine));
  }
}

bool QEdit::ShowsCaret() const
{
  return HasFocus() && IsEnabled() && (app->GetDisplay().Clock() - caretSince) / CARET_BLINK % 2 == 0;
}

void QEdit::PaintLine(const Line& line, int y)
{
  const QFont& f = *GetFont();
  const auto penAt = [&](size_t position) {
    const size_t end = std::clamp(position, line.begin, line.end);
    const std::string_view before(text.data() + line.begin, end - line.begin);
    return MARGIN - scrollX + static_cast<int>(f.GetWidth(before));
  };
  const int height = static_cast<int>(f.GetHeight());
  if (HasSelection() && SelectionBegin() <= line.end && SelectionEnd() >= line.begin) {
    const int from = penAt(SelectionBegin());
    cv.SetColor(HasFocus() ? PX_FACE : PX_DKGRAY, 255);
    cv.Rectfill(from, y, penAt(SelectionEnd()) - from, height);
  }
  cv.SetColor(PX_WHITE, IsEnabled() ? 255 : 110);
  cv.Text(std::string_view(text).substr(line.begin, line.end - line.begin), penAt(line.begin), y);
  if (ShowsCaret() && cursor >= line.begin && cursor <= line.end) {
    cv.SetColor(PX_FOCUS);
    cv.Rectfill(penAt(cursor), y, 1, height);
  }
}

void QEdit::Paint(const QRect*)
{
  if (!IsVisible())
    return;
  cv.Begin();
  cv.SetBlending(true);
  cv.SetColor(24, 30, 32, 255);
  cv.Rectfill(0, 0, rect.wid, rect.hgt);
  cv.SetColor(HasFocus() ? PX_FOCUS : PX_FACE, 255);
  cv.Rectangle(0, 0, rect.wid, rect.hgt);
  cv.SetClipRect(2, 2, rect.wid - 4 - BarWidth(), rect.hgt - 4);
  cv.SetFont(GetFont());
  const auto& lines = Lines();
  const auto visible = static_cast<size_t>(VisibleLines());
  const int height = static_cast<int>(GetFont()->GetHeight());
  int y = IsMultiLine() ? 4 : (rect.hgt - height) / 2;
  for (size_t i = firstLine; i < lines.size() && i <= firstLine + visible; ++i, y += height)
    PaintLine(lines[i], y);
  cv.DisableClipping();
  cv.End();
}

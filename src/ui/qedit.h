#pragma once

#include "ui/qcontrol.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

class QScrollBar;

// A field to type in: one line, or several. Enter in a single line sends CLICK with the key in n.
// Positions are byte offsets into the text and always lie between two characters.
class QEdit : public QControl
{
public:
  enum EditFlag : uint32_t
  {
    MULTILINE = 0x0001,
    EATS_ENTER = 0x0008, // Enter goes no further than the CLICK
    READ_ONLY = 0x0010,  // for the keyboard
    SCROLLBAR = 0x0080,
    OVERWRITE = 0x0100,   // typing replaces the character under the cursor
    STOP_AT_DOT = 0x0200, // ... but never one of these
    STOP_AT_COLON = 0x0400,
    STOP_AT_MINUS = 0x0800,
    AUTO_INDENT = 0x1000,  // a new line begins as far in as the one above
    SMART_INDENT = 0x2000, // "}" goes two blanks back, "#" to the first column
    TAKES_TAB = 0x4000,    // the tab key inserts two blanks
  };
  // maxSize: bytes that the text may have; what goes beyond is refused.
  QEdit(QWindow* owner, const QRect& area, size_t maxSize, uint32_t flags = 0, std::string_view content = {});
  ~QEdit() override;
  const char* GetClassName() const override { return "QEdit"; }
  void Paint(const QRect* r = nullptr) override;
  bool Event(QEvent* event) override;
  bool EvButtonPress(int button, int x, int y) override;
  bool EvButtonRelease(int button, int x, int y) override;
  bool EvMotionNotify(int x, int y) override;
  bool EvKeyPress(int key, int x, int y) override;
  bool EvEnter(QEvent* event) override;
  bool EvLeave(QEvent* event) override;
  // Of what was typed, pasted and deleted since SetText; false when there is nothing left.
  bool Undo();
  bool Redo();

  void SetText(std::string_view content) override; // cut at the maximum; the cursor goes to the end
  void SelectAll();
  void Deselect();
  bool HasSelection() const { return anchor != cursor; }
  std::string GetSelectedText() const;
  void Cut();
  void Copy();
  void Paste();
  void Goto(size_t position);
  // Selects the next place of the text behind the cursor. False when there is none, or the wanted text is longer than
  // 1,023 bytes (reported).
  bool Find(std::string_view wanted, bool caseDependent = true);
  size_t GetCursor() const { return cursor; }
  int GetCursorX() const; // characters from the start of its line
  int GetCursorY() const; // lines from the first
  size_t GetMaxSize() const { return maxSize; }

  uint32_t editFlags;

private:
  struct Line
  {
    size_t begin, end; // without the line feed
  };
  bool IsMultiLine() const { return editFlags & MULTILINE; }
  // One step of editing: at a place, bytes that went and bytes that came.
  struct Change
  {
    size_t at;
    std::string removed, inserted;
  };
  const std::vector<Line>& Lines() const; // never empty
  size_t LineOf(const std::vector<Line>& lines, size_t position) const;
  // All changes of the text but SetText's come through here.
  void Replace(size_t begin, size_t end, std::string_view more);
  void Remember(size_t at, std::string_view removed, std::string_view inserted);
  void TextChanged();
  void ScrollTo(int line);
  int BarWidth() const;
  std::string Indentation() const;
  size_t SelectionBegin() const { return std::min(anchor, cursor); }
  size_t SelectionEnd() const { return std::max(anchor, cursor); }
  void MoveTo(size_t position, bool select);
  bool MoveKey(int key, bool shift, bool ctrl);
  void MoveByLines(int lines, bool select);
  size_t WordStep(bool forward) const;
  size_t EmptyLine(bool forward) const;
  bool EditKey(int key, bool ctrl);
  void DeleteSelection();
  void Insert(std::string_view more);
  bool TypeCharacter(char32_t c);
  bool MayOverwrite() const;
  size_t PositionAt(int x, int y) const;
  int VisibleLines() const;
  void KeepCursorVisible();
  void PaintLine(const Line& line, int y);
  bool ShowsCaret() const;

  size_t maxSize;
  size_t cursor = 0, anchor = 0; // the selection lies between them
  size_t firstLine = 0;
  mutable std::vector<Line> lineIndex; // empty: to be made anew
  std::vector<Change> undo, redo;
  bool joinsNext = false; // a character typed next belongs to the last change
  std::unique_ptr<QScrollBar> bar;
  int column = -1; // that moving up and down keeps to; -1: the cursor's
  int scrollX = 0; // pixels hidden at the left
  bool selecting = false;
  char32_t typed = 0;     // by the key press that is being handled
  int64_t caretSince = 0; // it stands still for a moment after a key
};

#include "ui/qbutton.h"
#include "ui/qedit.h"
#include "ui/qfont.h"
#include "ui/uifixture.h"

namespace {

// A field with the focus, and what is typed into it.
class EditTest : public UiTest
{
protected:
  QEdit& Make(std::string_view text, uint32_t flags = 0, size_t maximum = 80)
  {
    edit = std::make_unique<QEdit>(Shell(), QRect{10, 10, 200, 60}, maximum, flags, text);
    Manager().SetKeyboardFocus(edit.get());
    Run();
    events.clear();
    return *edit;
  }
  void Keys(std::initializer_list<int> codes)
  {
    for (const int code : codes)
      display->Key(code);
    Run();
  }
  void Type(std::string_view text)
  {
    display->Type(text);
    Run();
  }
  // The text with "|" where the cursor is, and "[" at the other end of the selection.
  std::string Shown() const
  {
    std::string s = edit->GetText();
    const size_t cursor = edit->GetCursor();
    const std::string selected = edit->GetSelectedText();
    const bool before = !selected.empty() && s.compare(cursor, selected.size(), selected) == 0;
    if (selected.empty())
      return s.insert(cursor, "|");
    if (before)
      return s.insert(cursor + selected.size(), "[").insert(cursor, "|");
    return s.insert(cursor, "|").insert(cursor - selected.size(), "[");
  }
  std::unique_ptr<QEdit> edit;
};

constexpr int SHIFT = QMOD_SHIFT, CTRL = QMOD_CTRL;

TEST_F(EditTest, KeysMoveTheCursorAndTheSelection)
{
  const struct
  {
    const char* what;
    std::vector<int> keys;
    const char* shown;
  } cases[] = {
      {"starts at the end", {}, "one two_2|"},
      {"left, right", {QKEY_HOME, QKEY_RIGHT, QKEY_RIGHT, QKEY_LEFT}, "o|ne two_2"},
      {"not past the ends", {QKEY_HOME, QKEY_LEFT, QKEY_END, QKEY_RIGHT}, "one two_2|"},
      {"shift selects", {SHIFT | QKEY_LEFT, SHIFT | QKEY_LEFT}, "one two|_2["},
      {"shift and home", {QKEY_LEFT, SHIFT | QKEY_HOME}, "|one two_[2"},
      {"shift and end", {QKEY_HOME, QKEY_RIGHT, SHIFT | QKEY_END}, "o[ne two_2|"},
      {"left drops the selection at its end", {QKEY_HOME, SHIFT | QKEY_RIGHT, QKEY_LEFT}, "o|ne two_2"},
      {"a word back", {CTRL | QKEY_LEFT}, "one |two_2"},
      {"two words back", {CTRL | QKEY_LEFT, CTRL | QKEY_LEFT}, "|one two_2"},
      {"a word on", {QKEY_HOME, CTRL | QKEY_RIGHT}, "one |two_2"},
      {"all", {CTRL | 'A'}, "[one two_2|"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    Make("one two_2");
    for (const int key : c.keys)
      Keys({key});
    EXPECT_EQ(c.shown, Shown());
  }
}

TEST_F(EditTest, TypingReplacesTheSelectionAndStopsAtTheMaximum)
{
  Make("lakeside", 0, 10);
  edit->SelectAll();
  Type("Spa");
  EXPECT_EQ("Spa|", Shown());
  Type("-12345678");
  EXPECT_EQ("Spa-123456|", Shown());
  Keys({QKEY_HOME});
  Type("x");
  EXPECT_EQ("|Spa-123456", Shown());
  edit->SetText("longer than ten");
  EXPECT_EQ("longer tha", edit->GetText());
  EXPECT_EQ(0, Count(QEvent::CLICK)); // typing tells nobody
}

TEST_F(EditTest, AnyKeyboardCanTypeAnyCharacter)
{
  Make("", 0, 9);
  Type("é@Ж€");
  EXPECT_EQ("é@Ж€|", Shown()); // 2 + 1 + 2 + 3 bytes
  Type("ü");
  EXPECT_EQ("é@Ж€|", Shown()); // would be cut in two
  Keys({QKEY_LEFT, QKEY_BACKSPACE});
  EXPECT_EQ("é@|€", Shown());
  Keys({QKEY_HOME, QKEY_DELETE});
  EXPECT_EQ("|@€", Shown());
  display->KeyDown('V', 22); // what a control key types isn't text
  Run();
  EXPECT_EQ("|@€", Shown());
}

TEST_F(EditTest, DeletesTheSelectionOrOneCharacter)
{
  Make("abcd");
  Keys({QKEY_BACKSPACE, QKEY_HOME, QKEY_DELETE});
  EXPECT_EQ("|bc", Shown());
  Keys({QKEY_BACKSPACE, SHIFT | QKEY_END, QKEY_DELETE, QKEY_DELETE});
  EXPECT_EQ("|", Shown());
}

TEST_F(EditTest, GoesByTheClipboard)
{
  Make("grid pit", 0, 12);
  Keys({CTRL | SHIFT | QKEY_LEFT, CTRL | 'X'});
  EXPECT_EQ("pit", display->clipboard);
  EXPECT_EQ("grid |", Shown());
  Keys({CTRL | 'A', CTRL | 'C', QKEY_END, CTRL | 'V'});
  EXPECT_EQ("grid grid |", Shown());
  display->clipboard = "a\tb\nsecond line";
  Keys({CTRL | 'V'});
  EXPECT_EQ("grid grid ab|", Shown()); // one line, no control characters, no more than fits
  Keys({CTRL | 'C'});
  EXPECT_EQ("a\tb\nsecond line", display->clipboard); // nothing was selected
}

TEST_F(EditTest, EnterIsToldAndPassesUnlessEaten)
{
  for (const uint32_t flags : {0u, static_cast<uint32_t>(QEdit::EATS_ENTER)}) {
    SCOPED_TRACE(flags);
    Make("x", flags);
    Keys({SHIFT | QKEY_ENTER});
    ASSERT_EQ(1, Count(QEvent::CLICK, edit.get()));
    int keys = 0;
    for (const QEvent& e : events) {
      if (e.type == QEvent::CLICK) {
        EXPECT_EQ(SHIFT | QKEY_ENTER, e.n);
      }
      keys += e.type == QEvent::KEYPRESS && QKeyOf(e.n) == QKEY_ENTER;
    }
    EXPECT_EQ(flags ? 0 : 1, keys);
  }
}

TEST_F(EditTest, LeavesOtherKeysToOthers)
{
  Make("x");
  QButton button(Shell(), {300, 0, 50, 20}, "b");
  button.SetShortcut('S'); // comes before the field, though that could use it
  Keys({'S'});
  EXPECT_EQ("x", edit->GetText());
  EXPECT_EQ(1, Count(QEvent::CLICK, &button));
  Manager().SetKeyboardFocus(edit.get());
  Keys({QKEY_F1, CTRL | 'G', QKEY_ESC});
  EXPECT_EQ("x", edit->GetText());
  int keys = 0;
  for (const QEvent& e : events)
    keys += e.type == QEvent::KEYPRESS && !QIsModifierKey(QKeyOf(e.n));
  EXPECT_EQ(3, keys);
  Keys({QKEY_TAB});
  EXPECT_EQ(&button, Manager().GetFocus());
}

TEST_F(EditTest, RefusesToTypeWhenReadOnlyOrDisabled)
{
  Make("x", QEdit::READ_ONLY);
  Type("abc");
  Keys({QKEY_BACKSPACE, CTRL | 'V'});
  EXPECT_EQ("x", edit->GetText());
  Make("x");
  edit->Disable();
  Type("abc");
  EXPECT_EQ("x", edit->GetText());
}

TEST_F(EditTest, OverwritesUpToAStop)
{
  Make("12.50", QEdit::OVERWRITE | QEdit::STOP_AT_DOT);
  Keys({QKEY_HOME});
  Type("987");
  EXPECT_EQ("987|.50", Shown());
}

TEST_F(EditTest, SeveralLinesTakeEnterAndTheVerticalKeys)
{
  Make("one\n\nthree", QEdit::MULTILINE);
  EXPECT_EQ(2, edit->GetCursorY());
  Keys({QKEY_UP, QKEY_UP});
  EXPECT_EQ("one|\n\nthree", Shown()); // the empty line has no column 5
  Keys({QKEY_HOME, CTRL | QKEY_DOWN});
  EXPECT_EQ("one\n|\nthree", Shown());
  Type("2");
  Keys({QKEY_ENTER});
  Type("x");
  EXPECT_EQ("one\n2\nx|\nthree", Shown());
  EXPECT_EQ(1, edit->GetCursorX());
  Keys({CTRL | QKEY_END, CTRL | QKEY_HOME});
  EXPECT_EQ("|one\n2\nx\nthree", Shown());
  EXPECT_EQ(0, Count(QEvent::CLICK));
}

TEST_F(EditTest, TheMouseSetsTheCursorAndSelects)
{
  Make("one two");
  Manager().SetKeyboardFocus(nullptr);
  display->Move(12, 20);
  display->ButtonDown(1);
  display->Move(205, 20);
  display->ButtonUp(1);
  Run();
  EXPECT_TRUE(edit->HasFocus());
  if (edit->GetFont()->IsCreated()) {
    EXPECT_EQ("[one two|", Shown());
  }
  display->Move(205, 400); // let go of the button: no more selecting
  Run();
  display->Click(400, 400); // on the shell: the keys are the editor's again
  Run();
  EXPECT_EQ(nullptr, Manager().GetFocus());
}

TEST_F(EditTest, IndentsAsAProgrammerExpects)
{
  Make("  if", QEdit::MULTILINE | QEdit::AUTO_INDENT | QEdit::SMART_INDENT | QEdit::TAKES_TAB);
  Keys({QKEY_ENTER, QKEY_TAB});
  Type("x");
  Keys({QKEY_ENTER});
  Type("}");
  Keys({QKEY_ENTER});
  Type("#");
  EXPECT_EQ("  if\n    x\n  }\n#|", Shown());
  Keys({SHIFT | QKEY_TAB});
  EXPECT_EQ("  if\n    x\n  }\n#|", Shown());
}

TEST_F(EditTest, UndoesAndRedoesWhatWasDone)
{
  Make("");
  Type("one two");
  Keys({CTRL | QKEY_BACKSPACE});
  Type("six");
  Keys({QKEY_HOME});
  Type("a");
  const char* states[] = {"aone six", "one six", "one ", "one two", ""};
  for (size_t i = 0; i < std::size(states); ++i) {
    EXPECT_EQ(states[i], edit->GetText());
    Keys({CTRL | 'Z'});
  }
  for (size_t i = std::size(states); i-- > 0;) {
    EXPECT_EQ(states[i], edit->GetText());
    Keys({CTRL | 'Y'});
  }
  Keys({CTRL | 'Z'});
  Type("b");
  EXPECT_FALSE(edit->Redo()); // another way was taken
  edit->SetText("new");
  EXPECT_FALSE(edit->Undo());
}

TEST_F(EditTest, ScrollsBesideItsCursor)
{
  std::string lines;
  for (int i = 0; i < 50; ++i)
    lines += std::to_string(i) + "\n";
  Make(lines, QEdit::MULTILINE | QEdit::SCROLLBAR, 1000);
  Keys({CTRL | QKEY_HOME});
  display->Click(202, 62); // the bar's lower arrow
  Run();
  EXPECT_EQ(&*edit, Manager().GetFocus());
  EXPECT_EQ(0, edit->GetCursorY());
  display->Click(20, 20);
  Run();
  EXPECT_EQ(1, edit->GetCursorY()); // the first that is seen now
  display->Wheel(-120);
  display->now += 1000; // no double click
  display->Click(20, 20);
  Run();
  EXPECT_EQ(4, edit->GetCursorY());
  Type("x");
  EXPECT_TRUE(edit->GetText().find("\n4x\n") != std::string::npos ||
              edit->GetText().find("\nx4\n") != std::string::npos);
}

// Against the obvious way to edit a text, with any keys in any order.
TEST_F(EditTest, HoldsWhatAPlainModelHolds)
{
  constexpr size_t MOST = 60;
  Make("", QEdit::MULTILINE, MOST);
  std::string model;
  size_t cursor = 0, anchor = 0;
  uint32_t random = 12345;
  const auto below = [&](uint32_t n) { return (random = random * 1664525 + 1013904223) / 65536 % n; };
  const auto replace = [&](const std::string& more) {
    const size_t begin = std::min(cursor, anchor), end = std::max(cursor, anchor);
    const bool fits = model.size() - (end - begin) + more.size() <= MOST;
    model.replace(begin, end - begin, fits ? more : "");
    cursor = anchor = begin + (fits ? more.size() : 0);
  };
  for (int i = 0; i < 4000; ++i) {
    const bool shift = below(3) == 0;
    switch (below(7)) {
    case 0:
      Keys({QKEY_LEFT | (shift ? SHIFT : 0)});
      cursor = anchor != cursor && !shift ? std::max(anchor, cursor) : cursor - (cursor > 0);
      anchor = shift ? anchor : cursor;
      break;
    case 1:
      Keys({QKEY_RIGHT | (shift ? SHIFT : 0)});
      cursor += cursor < model.size();
      anchor = shift ? anchor : cursor;
      break;
    case 2:
      Keys({QKEY_BACKSPACE});
      anchor = anchor == cursor && cursor > 0 ? cursor - 1 : anchor;
      replace("");
      break;
    case 3:
      Keys({QKEY_DELETE});
      anchor = anchor == cursor && cursor < model.size() ? cursor + 1 : anchor;
      replace("");
      break;
    case 4:
      Keys({QKEY_ENTER});
      replace("\n");
      break;
    default: {
      const std::string letter(1, static_cast<char>('a' + below(26)));
      Type(letter);
      replace(letter);
    }
    }
    ASSERT_EQ(model, edit->GetText()) << i;
    ASSERT_EQ(cursor, edit->GetCursor()) << i;
  }
  while (edit->Undo()) {
  }
  EXPECT_LE(edit->GetText().size(), MOST);
}

} // namespace

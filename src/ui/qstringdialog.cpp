#include "ui/qstringdialog.h"

#include "ui/qapp.h"
#include "ui/qfont.h"
#include "ui/qtextfit.h"

#include <algorithm>

namespace {

constexpr int PROMPT_Y = 38;
constexpr int BUTTON_ROOM = 50; // from the buttons' top to the lower edge

int LineHeight(int lines)
{
  const QFont* font = lines > 1 ? app->GetSystemMonoFont() : app->GetSystemFont();
  return std::max(static_cast<int>(font->GetHeight()), 12);
}

// In a narrow dialog the two share what there is.
int ButtonWid(int wid)
{
  return std::min(100, (wid - 30) / 2);
}

int PromptHeight(int wid, std::string_view prompt)
{
  const QFont& font = *app->GetSystemFont();
  const std::string lines = QWrapText(font, prompt, wid - 20, true);
  return std::max(static_cast<int>(font.GetHeight(lines.c_str())), 18);
}

// Below the prompt, however many lines that takes.
int EditY(int wid, std::string_view prompt)
{
  return PROMPT_Y + PromptHeight(wid, prompt) + 6;
}

} // namespace

int QStringDialog::HeightFor(int wid, std::string_view prompt, int lines)
{
  return EditY(wid, prompt) + std::max(lines, 1) * LineHeight(lines) + 8 + 10 + BUTTON_ROOM;
}

QStringDialog::QStringDialog(QWindow* owner, const QRect& area, std::string_view title, std::string_view prompt,
                             std::string_view text, int maxLen, int lines) :
    QDialog(owner, area, title),
    single(lines <= 1), label(this, {10, PROMPT_Y, area.wid - 20, PromptHeight(area.wid, prompt)}, prompt),
    edit(this,
         {10, EditY(area.wid, prompt), area.wid - 20,
          std::max(area.hgt - EditY(area.wid, prompt) - BUTTON_ROOM - 10, LineHeight(lines) + 8)},
         static_cast<size_t>(std::max(maxLen, 0)), single ? 0u : static_cast<uint32_t>(QEdit::MULTILINE), text),
    ok(this, {10, area.hgt - BUTTON_ROOM, ButtonWid(area.wid), 40}, app->GetText("misc.ok", "OK")),
    cancel(this, {area.wid - 10 - ButtonWid(area.wid), area.hgt - BUTTON_ROOM, ButtonWid(area.wid), 40},
           app->GetText("misc.cancel", "Cancel"))
{
  if (!single)
    edit.SetFont(app->GetSystemMonoFont());
  ok.SetShortcut(single ? static_cast<int>(QKEY_ENTER) : QMOD_ALT | 'O');
  cancel.SetShortcut(QKEY_ESC);
}

void QStringDialog::Filter(QEvent* event)
{
  const int key = event->type == QEvent::KEYPRESS ? QKeyOf(event->n) : 0;
  if (event->type == QEvent::CLOSE || (event->type == QEvent::CLICK && event->win == &cancel))
    result = 2;
  else if ((event->type == QEvent::CLICK && event->win == &ok) || (single && key == QKEY_ENTER) || key == 300)
    result = 1;
}

int QStringDialog::Execute()
{
  result = -1;
  app->GetWindowManager()->SetKeyboardFocus(&edit);
  edit.SelectAll();
  return RunModal([this](QEvent* event) { Filter(event); }, result);
}

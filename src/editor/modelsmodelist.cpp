#include "editor/modelsmodelist.h"

#include "ui/qapp.h"
#include "ui/qkeys.h"

#include <algorithm>

namespace {

constexpr int MARGIN = 10;
constexpr int TOP = 30; // below the title
constexpr int BUTTON_HEIGHT = 20;

QRect Centred(const QWindow& shell)
{
  const int wid = shell.GetWidth() / 2;
  const int hgt = shell.GetHeight() * 9 / 10;
  return {(shell.GetWidth() - wid) / 2, (shell.GetHeight() - hgt) / 2, wid, hgt};
}

QRect ListRect(const QWindow& dialog)
{
  return {MARGIN, TOP, dialog.GetWidth() - 2 * MARGIN, dialog.GetHeight() - TOP - BUTTON_HEIGHT};
}

// Two beside each other below the list.
QRect ButtonRect(const QWindow& dialog, int i)
{
  const QRect list = ListRect(dialog);
  const int wid = list.wid / 2;
  return {list.x + i * wid, list.y + list.hgt, wid, BUTTON_HEIGHT};
}

} // namespace

// Only what moves the cursor by pages is the list's own.
bool ModelsModeList::Names::Event(QEvent* event)
{
  if (event->type == QEvent::KEYPRESS)
    switch (event->n) {
    case QKEY_PGUP:
    case QKEY_PGDN:
    case QKEY_HOME:
    case QKEY_END:
      break;
    default:
      return false;
    }
  return QListBox::Event(event);
}

ModelsModeList::ModelsModeList(QWindow& shell, const char* title, std::span<const std::string> items) :
    dialog(&shell, Centred(shell), title), list(&dialog, ListRect(dialog)),
    ok(&dialog, ButtonRect(dialog, 0), app->GetText("misc.ok", "OK")),
    cancel(&dialog, ButtonRect(dialog, 1), app->GetText("misc.cancel", "Cancel"))
{
  for (const std::string& item : items)
    list.AddString(item);
  app->GetWindowManager()->SetKeyboardFocus(&list);
}

int ModelsModeList::Cursor() const
{
  return list.GetFirstSelected();
}

void ModelsModeList::SetCursor(int i)
{
  const int at = std::clamp(i, 0, std::max(list.GetItemCount() - 1, 0));
  list.Select(at);
  list.SetItemVisible(at);
}

EditList::Answer ModelsModeList::AnswerTo(const QEvent& event)
{
  const bool click = event.type == QEvent::CLICK;
  if ((click && event.win == &ok) || (event.type == QEvent::DOUBLECLICK && event.win == &list))
    return Answer::OK;
  // Who closes the editor's window leaves the list first.
  if ((click && event.win == &cancel) || event.type == QEvent::CLOSE)
    return Answer::CANCEL;
  return Answer::NONE;
}

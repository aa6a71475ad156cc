#include "ui/qtextdialog.h"

#include "ui/qapp.h"

namespace {

constexpr int BUTTON_WID = 100;
constexpr int BUTTON_HGT = 35;

QRect OkRect(const QRect& area, int style)
{
  const int x = style == QTextDialog::OK_ONLY ? (area.wid - BUTTON_WID) / 2 : 12;
  return {x, area.hgt - 40, BUTTON_WID, BUTTON_HGT};
}

} // namespace

QTextDialog::QTextDialog(QWindow* owner, const QRect& area, std::string_view title, std::string_view text, int style) :
    QDialog(owner, area, title), label(this, {10, 48, area.wid - 20, area.hgt - 48 - 44}, text),
    ok(this, OkRect(area, style), app->GetText("misc.ok", "OK"))
{
  ok.SetShortcut(QKEY_ENTER);
  if (style == OK_ONLY)
    return;
  cancel = std::make_unique<QButton>(this, QRect{area.wid - 110, area.hgt - 40, BUTTON_WID, BUTTON_HGT},
                                     app->GetText("misc.cancel", "Cancel"));
  cancel->SetShortcut(QKEY_ESC);
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

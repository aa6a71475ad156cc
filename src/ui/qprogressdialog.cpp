#include "ui/qprogressdialog.h"

#include "ui/qapp.h"
#include "ui/qfont.h"
#include "ui/qtextfit.h"

#include <algorithm>

namespace {

constexpr int BUTTON_WID = 100;
constexpr int BUTTON_HGT = 40;

// From the lower edge up: the button, if there is one, and the bar above it.
QRect BarRect(const QRect& area, uint32_t flags)
{
  const int bottom = area.hgt - 10 - (flags & QProgressDialog::NO_CANCEL ? 0 : BUTTON_HGT + 6);
  const int height = std::clamp(bottom - 62, 16, 24);
  return {10, bottom - height, area.wid - 20, height};
}

} // namespace

QProgressDialog::QProgressDialog(QWindow* owner, const QRect& area, std::string_view title, std::string_view newText,
                                 uint32_t wanted) :
    QDialog(owner, area, title, MOVABLE | MODAL, !(wanted & NO_CANCEL)),
    label(this, {10, 36, area.wid - 20, 20}, {}), bar(this, BarRect(area, wanted)),
    timerStart(app->GetDisplay().Clock())
{
  if (!(wanted & NO_CANCEL)) {
    cancel = std::make_unique<QButton>(
        this, QRect{(area.wid - BUTTON_WID) / 2, area.hgt - BUTTON_HGT - 8, BUTTON_WID, BUTTON_HGT},
        app->GetText("misc.cancel", "Cancel"));
    cancel->SetShortcut(QKEY_ESC);
  }
  SetText(newText);
  SetProgress(0, 100);
  app->GetWindowManager()->SetKeyboardFocus(cancel ? static_cast<QWindow*>(cancel.get()) : this);
  procedureBefore = app->SetEventProc([this](QEvent* event) {
    if (QDialog::IsRelease(*event) && procedureBefore)
      procedureBefore(event);
    Filter(*event);
    return true;
  });
}

QProgressDialog::~QProgressDialog()
{
  if (app)
    app->SetEventProc(std::move(procedureBefore));
}

void QProgressDialog::Filter(const QEvent& event)
{
  const bool escape = event.type == QEvent::KEYPRESS && QKeyOf(event.n) == QKEY_ESC;
  const bool clicked = event.type == QEvent::CLICK && event.win == cancel.get();
  if (cancel && (escape || clicked || event.type == QEvent::CLOSE))
    cancelled = true;
}

void QProgressDialog::SetText(std::string_view newText)
{
  text = newText;
  label.SetText(QShortenText(*label.GetFont(), text, label.rect.wid));
}

void QProgressDialog::SetProgress(int value, int total)
{
  bar.SetProgress(value, total);
  const int64_t percent = total != 0 ? std::clamp<int64_t>(int64_t{100} * value / total, 0, 100) : 100;
  bar.SetText(std::to_string(percent) + "%");
}

bool QProgressDialog::Poll()
{
  app->RunPoll();
  if (const int64_t now = app->GetDisplay().Clock(); now - timerStart >= interval) {
    timerStart = now;
    if (const auto procedure = callback)
      procedure();
    else
      app->PaintIfWanted();
  }
  if (cancel && app->GetDisplay().WantsEnd())
    cancelled = true;
  return !cancelled;
}

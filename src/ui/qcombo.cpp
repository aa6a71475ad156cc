#include "ui/qcombo.h"

#include "ui/qapp.h"
#include "ui/qfont.h"
#include "ui/qstepbutton.h"

#include <algorithm>

namespace {

constexpr int MAX_LINES = 12; // of the list at once
constexpr size_t MAX_TEXT = 1024;

// Shows the choice, with a small arrow behind it.
class ChoiceButton : public QButton
{
public:
  using QButton::QButton;
  void Paint(const QRect* r) override
  {
    QButton::Paint(r);
    if (!IsVisible())
      return;
    cv.Begin();
    cv.SetBlending(true);
    cv.SetColor(255, 255, 255, IsEnabled() ? 200 : 90);
    for (int i = 0; i < 4; ++i)
      cv.Rectfill(rect.wid - 15 + i, rect.hgt / 2 - 2 + i, 7 - 2 * i, 1);
    cv.End();
  }
};

} // namespace

// Takes no text of its own: keys and presses are the combo's.
class QCombo::Field : public QEdit
{
public:
  Field(QCombo& owner, const QRect& area) : QEdit(&owner, area, MAX_TEXT, READ_ONLY), combo(owner) {}
  bool EvButtonPress(int button, int, int) override
  {
    if (button != 1)
      return false;
    app->GetWindowManager()->SetKeyboardFocus(this);
    combo.Open();
    return true;
  }
  bool EvKeyPress(int key, int x, int y) override
  {
    return combo.EvKeyPress(key, x, y) || QEdit::EvKeyPress(key, x, y);
  }

private:
  QCombo& combo;
};

class QCombo::Popup : public QDialog
{
public:
  Popup(QCombo& owner, const QRect& area) :
      QDialog(app->GetShell(), area, {}, MODAL, false), combo(owner), list(this, {0, 0, area.wid, area.hgt})
  {
    HideTitleBar();
    flags |= POPUP;
    for (int i = 0; i < combo.GetCount(); ++i)
      list.AddString(combo.GetString(i));
    if (combo.GetSelected() >= 0) {
      list.Select(combo.GetSelected());
      list.SetFirst(combo.GetSelected() - list.GetVisibleLines() / 2);
    }
    app->GetEventQueue()->Forget(&list); // nobody has chosen yet
    app->GetWindowManager()->SetKeyboardFocus(&list);
  }
  // Each of these ends with the popup gone.
  bool Event(QEvent* event) override
  {
    if (event->type == QEvent::CLOSE) {
      combo.CloseList();
      return true;
    }
    if (event->type == QEvent::CLICK && event->win == &list) {
      if (event->n == 0) // by hand, not on the way with the keys
        combo.Choose(list.GetFirstSelected());
      return true;
    }
    return QDialog::Event(event);
  }
  bool EvKeyPress(int key, int, int) override
  {
    if (key == QKEY_ENTER || key == QKEY_SPACE)
      combo.Choose(list.GetFirstSelected());
    else if (key == QKEY_ESC || key == QKEY_TAB)
      combo.CloseList();
    return true;
  }

private:
  QCombo& combo;
  QListBox list;
};

QCombo::QCombo(QWindow* owner, const QRect& area, uint32_t wanted) : QControl(owner, area, {})
{
  Start(false);
  if (wanted & LIST_ONLY) {
    button = std::make_unique<ChoiceButton>(this, QRect{0, 0, area.wid, area.hgt}, "");
    return;
  }
  const int wid = std::min(area.hgt, area.wid / 2);
  field = std::make_unique<Field>(*this, QRect{0, 0, area.wid - wid, area.hgt});
  button = std::make_unique<QStepButton>(this, QRect{area.wid - wid, 0, wid, area.hgt}, "$DOWN");
}

QCombo::~QCombo() = default;

void QCombo::AddString(std::string_view more)
{
  strings.emplace_back(more);
}

void QCombo::Empty()
{
  CloseList();
  strings.clear();
  SetSelected(-1);
}

std::string QCombo::GetString(int i) const
{
  return i >= 0 && i < GetCount() ? strings[static_cast<size_t>(i)] : std::string();
}

void QCombo::SetSelected(int i)
{
  selected = i >= 0 && i < GetCount() ? i : -1;
  SetText(GetString(selected));
  if (field)
    field->SetText(text);
  else
    button->SetText(text);
}

// Below the control, or above it where there is more room.
void QCombo::Open()
{
  if (popup || strings.empty() || !IsEnabled())
    return;
  const QRect at = RootRect();
  const QRect shell = app->GetShell()->RootRect();
  const int below = shell.hgt - at.y - at.hgt, above = at.y;
  const int line = std::max(static_cast<int>(GetFont()->GetHeight()), 10) + 4;
  const int wanted = std::min(GetCount(), MAX_LINES) * line + 4;
  const bool upwards = wanted > below && above > below;
  const int room = upwards ? above : below;
  const int hgt = wanted <= room ? wanted : std::max((room - 4) / line, 1) * line + 4;
  popup = std::make_unique<Popup>(*this, QRect{at.x, upwards ? at.y - hgt : at.y + at.hgt, at.wid, hgt});
}

void QCombo::CloseList()
{
  popup.reset();
}

void QCombo::Choose(int i)
{
  CloseList();
  if (i < 0)
    return;
  SetSelected(i);
  SendEvent(QEvent::CLICK);
}

void QCombo::Step(int by)
{
  const int next = std::clamp(selected + by, 0, GetCount() - 1);
  if (!strings.empty() && next != selected)
    Choose(next);
}

bool QCombo::Event(QEvent* event)
{
  if (event->type == QEvent::CLICK && event->win == button.get()) {
    Open();
    return true;
  }
  return QControl::Event(event);
}

bool QCombo::EvKeyPress(int key, int x, int y)
{
  switch (key) {
  case QKEY_UP:
    Step(-1);
    return true;
  case QKEY_DOWN:
    Step(1);
    return true;
  case QKEY_DOWN | QMOD_ALT:
  case QKEY_SPACE:
    Open();
    return true;
  default:
    return QControl::EvKeyPress(key, x, y);
  }
}

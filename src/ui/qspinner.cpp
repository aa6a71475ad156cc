#include "ui/qspinner.h"

#include "foundation/qreport.h"
#include "ui/qapp.h"
#include "ui/qstepbutton.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace {

constexpr char SEPARATOR = ':';
constexpr size_t MAX_TEXT = 80;

std::string Printed(double value, int decimals)
{
  std::array<char, 64> digits;
  const auto end =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed, decimals);
  std::string text(digits.data(), end.ptr);
  // Rounded to nothing, a small negative number is nothing.
  if (text.find_first_not_of("-0.") == std::string::npos && text[0] == '-')
    text.erase(0, 1);
  return text;
}

// A decimal comma will do as well. False for what isn't a number as a whole.
bool Parsed(std::string text, double& value)
{
  std::replace(text.begin(), text.end(), ',', '.');
  const size_t begin = text.find_first_not_of(" +");
  const size_t end = text.find_last_not_of(' ');
  if (begin == std::string::npos)
    return false;
  double found = 0;
  const auto result = std::from_chars(text.data() + begin, text.data() + end + 1, found);
  if (result.ec != std::errc() || result.ptr != text.data() + end + 1 || !std::isfinite(found))
    return false;
  value = found;
  return true;
}

int ButtonWidth(const QRect& area)
{
  return std::min(area.hgt, area.wid / 3);
}

} // namespace

// Up and down step the number instead of moving the cursor.
class QSpinner::Field : public QEdit
{
public:
  Field(QSpinner& owner, const QRect& area) : QEdit(&owner, area, MAX_TEXT), spinner(owner) {}
  bool EvKeyPress(int key, int x, int y) override
  {
    if (key == QKEY_UP || key == QKEY_DOWN) {
      spinner.Step(key == QKEY_UP ? 1 : -1);
      return true;
    }
    return QEdit::EvKeyPress(key, x, y);
  }
  // Of what was typed the number remains.
  bool EvFocusOut(QEvent* event) override
  {
    spinner.ReadText();
    spinner.WriteText();
    return QEdit::EvFocusOut(event);
  }

private:
  QSpinner& spinner;
};

QSpinner::QSpinner(QWindow* owner, const QRect& area, int parts) :
    QControl(owner, area, {}), count(std::clamp(parts, 1, MAX_PART))
{
  Start(false);
  const int wid = ButtonWidth(area);
  edit = std::make_unique<Field>(*this, QRect{0, 0, area.wid - wid, area.hgt});
  const int half = area.hgt / 2;
  // They leave the cursor in its number.
  up = std::make_unique<QStepButton>(this, QRect{area.wid - wid, 0, wid, half}, "$UP");
  down = std::make_unique<QStepButton>(this, QRect{area.wid - wid, half, wid, area.hgt - half}, "$DOWN");
  WriteText();
}

QSpinner::~QSpinner() = default;

std::string QSpinner::GetText() const
{
  return edit->GetText();
}

QSpinner::Part* QSpinner::At(int i, const char* what)
{
  if (i >= 0 && i < count)
    return &values[static_cast<size_t>(i)];
  QWARN("QSpinner:%s(%d) out of range", what, i);
  return nullptr;
}

double QSpinner::GetValue(int i) const
{
  if (i >= 0 && i < count)
    return values[static_cast<size_t>(i)].value;
  QWARN("QSpinner:GetValue(%d) out of range - returning 0", i);
  return 0;
}

void QSpinner::SetValue(int i, double v)
{
  Part* part = At(i, "SetValue");
  if (!part || std::isnan(v))
    return;
  const double scale = std::pow(10.0, part->decimals);
  const double rounded = std::abs(v) < 1e12 ? std::round(v * scale) / scale : v;
  part->value = std::clamp(rounded, part->min, part->max);
  WriteText();
}

void QSpinner::SetStep(int i, double step)
{
  if (Part* part = At(i, "SetStep"))
    part->step = step;
}

void QSpinner::SetRange(int i, double min, double max)
{
  if (Part* part = At(i, "SetRange")) {
    part->min = min;
    part->max = std::max(min, max);
    SetValue(i, part->value);
  }
}

void QSpinner::SetDecimals(int i, int decimals)
{
  if (Part* part = At(i, "SetDecimals")) {
    part->decimals = std::clamp(decimals, 0, 9);
    WriteText();
  }
}

int QSpinner::GetCurrentPart() const
{
  const std::string before = edit->GetText().substr(0, edit->GetCursor());
  return std::min(static_cast<int>(std::count(before.begin(), before.end(), SEPARATOR)), count - 1);
}

void QSpinner::ReadText()
{
  std::string rest = edit->GetText();
  for (int i = 0; i < count; ++i) {
    const size_t end = rest.find(SEPARATOR);
    Part& part = values[static_cast<size_t>(i)];
    const std::string shown = rest.substr(0, end);
    // What still stands as it was written may have more decimals than are shown.
    if (double typed = 0; shown != Printed(part.value, part.decimals) && Parsed(shown, typed))
      part.value = std::clamp(typed, part.min, part.max);
    rest.erase(0, end == std::string::npos ? rest.size() : end + 1);
  }
}

// The cursor goes behind the number that it was in.
void QSpinner::WriteText()
{
  const int current = GetCurrentPart();
  std::string all;
  size_t cursor = 0;
  for (int i = 0; i < count; ++i) {
    const Part& part = values[static_cast<size_t>(i)];
    all += (i > 0 ? std::string(1, SEPARATOR) : std::string()) + Printed(part.value, part.decimals);
    if (i == current)
      cursor = all.size();
  }
  edit->SetText(all);
  edit->Goto(cursor);
}

void QSpinner::Step(int by)
{
  ReadText();
  const int i = GetCurrentPart();
  const Part& part = values[static_cast<size_t>(i)];
  SetValue(i, part.value + by * part.step);
  SendEvent(QEvent::CLICK);
}

bool QSpinner::Event(QEvent* event)
{
  if (event->type == QEvent::CLICK && (event->win == up.get() || event->win == down.get())) {
    Step(event->win == up.get() ? 1 : -1);
    return true;
  }
  if (event->type == QEvent::CLICK && event->win == edit.get()) {
    ReadText();
    WriteText();
    SendEvent(QEvent::CLICK, event->n);
    return true;
  }
  if (event->type == QEvent::WHEEL && (edit->HasFocus() || HasFocus())) {
    Step(event->n > 0 ? 1 : -1);
    return true;
  }
  return QControl::Event(event);
}

bool QSpinner::EvKeyRelease(int key, int, int)
{
  ReadText();
  if (QKeyOf(key) == QKEY_ENTER)
    app->GetWindowManager()->FocusNext();
  return false;
}

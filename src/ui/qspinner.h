#pragma once

#include "ui/qbutton.h"
#include "ui/qedit.h"

#include <array>

// A field for up to three numbers, with ":" between them, and two buttons that step the one under the cursor.
// It sends CLICK when a number was stepped, or confirmed with Enter.
class QSpinner : public QControl
{
public:
  static constexpr int MAX_PART = 3;
  // parts: 1 to 3.
  QSpinner(QWindow* owner, const QRect& area, int parts = 1);
  ~QSpinner() override;
  const char* GetClassName() const override { return "QSpinner"; }
  std::string GetText() const override;
  bool Event(QEvent* event) override;
  bool EvKeyRelease(int key, int x, int y) override;

  // 0, reported, for a part that it doesn't have.
  double GetValue(int i) const;
  // Clamped to the range and rounded to the decimals that are shown; one that isn't a number is ignored. Sends nothing.
  void SetValue(int i, double v);
  void SetStep(int i, double step); // reported for a part that it doesn't have
  void SetRange(int i, double min, double max);
  void SetDecimals(int i, int decimals); // 0 to 9
  // The part that the cursor stands in.
  int GetCurrentPart() const;
  QEdit& GetEdit() { return *edit; }

private:
  class Field;
  struct Part
  {
    double value = 0, min = -1e9, max = 1e9, step = 1;
    int decimals = 0;
  };
  Part* At(int i, const char* what);
  void Step(int by);
  void ReadText();
  void WriteText();

  std::array<Part, MAX_PART> values;
  int count;
  std::unique_ptr<QEdit> edit;
  std::unique_ptr<QButton> up, down;
};

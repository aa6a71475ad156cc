#pragma once

#include "ui/qwindow.h"

// The root: the one real window, all others lie on it. A press on it takes the keyboard focus from whoever has it.
class QShell : public QWindow
{
public:
  explicit QShell(const QRect& area);
  const char* GetClassName() const override { return "QShell"; }
  void Paint(const QRect* r = nullptr) override;
  bool EvButtonPress(int button, int x, int y) override;
  bool EvResize(int wid, int hgt) override;
  std::string GetText() const override { return title; }
  void SetText(std::string_view text) override; // the title of the window

private:
  std::string title;
};

// The 3D canvas: a plain area of the shell that the application draws into.
class QBC : public QWindow
{
public:
  QBC(QWindow* owner, const QRect& area);
  const char* GetClassName() const override { return "QBC"; }
};

#pragma once

#include "foundation/qrect.h"

#include <array>
#include <memory>
#include <span>

class QButton;
class QCheck;
class QLabel;
class QRadio;
class QWindow;

// The shell's own controls, laid out around the view: command buttons below it, modes and operations at its right.
class EditWidgets
{
public:
  static constexpr int COMMANDS = 13;
  static constexpr int MODES = 10;
  static constexpr int OPERATIONS = 12;
  static const std::array<const char*, COMMANDS> commandLabels;
  static const std::array<const char*, MODES> modeLabels;

  EditWidgets(QWindow& shell, const QRect& viewRect);
  ~EditWidgets();
  EditWidgets(const EditWidgets&) = delete;
  EditWidgets& operator=(const EditWidgets&) = delete;

  // The index of a widget in its row, or -1.
  int CommandOf(const QWindow* w) const;
  int ModeOf(const QWindow* w) const;
  int OperationOf(const QWindow* w) const;
  bool IsObjectCheck(const QWindow* w) const;

  void SetOpButtons(std::span<const char* const> labels);
  void MarkMode(int n); // the radio button of mode n is on, all others off
  void SetObjectCheck(bool on);
  bool ObjectCheck() const;
  // The current mode's check box, below the operations.
  void ShowModeCheck(const char* label, bool on);
  void HideModeCheck();
  bool ModeCheck() const;
  QRect Command0() const; // rectangles that the panels' background starts from
  QRect Mode0() const;

private:
  std::array<std::unique_ptr<QButton>, COMMANDS> commands;
  std::array<std::unique_ptr<QRadio>, MODES> modes;
  std::array<std::unique_ptr<QButton>, OPERATIONS> operations;
  std::unique_ptr<QCheck> objectCheck;
  std::unique_ptr<QCheck> modeCheck;
  std::unique_ptr<QLabel> operationsLabel;
};

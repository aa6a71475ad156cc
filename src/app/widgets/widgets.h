#pragma once

#include "ui/qapp.h"
#include "ui/qlabel.h"
#include "ui/qtabcontrol.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class DTexture;
class QFont;

// The window with all controls: pages of samples, and a line at the bottom that tells the last event.
class Widgets
{
public:
  static constexpr int WID = 1000, HGT = 720;
  Widgets();
  ~Widgets();
  Widgets(const Widgets&) = delete;
  Widgets& operator=(const Widgets&) = delete;

  // The page's name is its head's; false when there is none such.
  bool ShowPage(std::string_view name);
  void Event(const QEvent& event);
  void Idle(); // every turn without an event

  // For the pages: what happens at the CLICK of a control, and at every turn.
  void OnClick(const QWindow& control, std::function<void()> action) { actions[&control] = std::move(action); }
  void OnIdle(std::function<void()> action) { idles.push_back(std::move(action)); }
  void Tell(const std::string& text) { line->SetText(text); }
  // Kept as long as the window; null when it can't be had.
  QFont* KeepFont(std::unique_ptr<QFont> font);
  DTexture* KeepPicture(std::unique_ptr<DTexture> picture);

private:
  std::vector<std::unique_ptr<QFont>> fonts;
  std::vector<std::unique_ptr<DTexture>> pictures;
  std::map<const QWindow*, std::function<void()>> actions;
  std::vector<std::function<void()>> idles;
  std::unique_ptr<QTabControl> tabs;
  std::unique_ptr<QLabel> line;
};

// Each fills a page of 960 x 620.
void FillButtonPage(Widgets& widgets, QTabPage& page);
void FillChoicePage(Widgets& widgets, QTabPage& page);
void FillProgressPage(Widgets& widgets, QTabPage& page);
void FillListPage(Widgets& widgets, QTabPage& page);
void FillTextPage(Widgets& widgets, QTabPage& page);
void FillDialogPage(Widgets& widgets, QTabPage& page);

#pragma once

#include "editor/editshell.h"
#include "support/tempdir.h"
#include "ui/qapp.h"
#include "ui/qnulldisplay.h"

#include <memory>
#include <string>
#include <vector>

// The whole editor on a display that isn't there, in a data root of its own. A test does what a person does and reads
// what a person would see.
class EditSession
{
public:
  EditSession();
  ~EditSession();
  EditSession(const EditSession&) = delete;
  EditSession& operator=(const EditSession&) = delete;

  // A small track: a flat road of 40 by 400 metres at height 0, two grid positions, four lines of spline.
  void WriteTrack(const std::string& name);
  std::string TrackFile(const std::string& track, const std::string& leaf) const;
  void WriteSettings(const std::string& text) const; // pavex.ini, before Start
  void Start();
  bool LoadTrack(const std::string& name);
  void Stop(); // as Shift-Q does

  // Answers the next dialog: types the text in place of what stands there and presses Enter. With "\x1b" Escape.
  // Before Start: a dialog of the start.
  void Answer(const std::string& text);
  void AnswerFile(const std::string& path); // to the next dialog, which asks for a file
  void Key(int code);
  void Click(int x, int y);
  void ClickOn(const char* className, const char* text); // the visible control of that text; fails without
  void ShiftDrag(int x1, int y1, int x2, int y2);
  void Drag(int button, int x1, int y1, int x2, int y2);
  void Frames(int n);                   // n idle calls
  void LookDownOn(const DVector3& eye); // straight down, and a frame so that picking knows it

  EditShell& Shell() { return *shell; }
  EditState& State() { return shell->State(); }
  QNullDisplay& Display() { return *display; }
  QApp& App() { return *application; }
  bool HudHas(const std::string& text);
  bool Sees(const char* className, const char* text) const;
  std::string TitleBar() const;
  // Title and text of each dialog that was answered, "Title: text".
  const std::vector<std::string>& Dialogs() const { return dialogs; }
  std::string LastDialog() const { return dialogs.empty() ? std::string() : dialogs.back(); }
  bool HasEnded() const { return ended; }

private:
  void Settle(); // until nothing is left to do
  void NoteDialog();

  TempDir root;
  std::unique_ptr<InDirectory> inside;
  QNullDisplay* display = nullptr; // the application's
  std::unique_ptr<QApp> application;
  std::unique_ptr<EditShell> shell;
  std::vector<std::string> dialogs;
  std::vector<std::string> early;
  bool started = false;
  bool ended = false;
};

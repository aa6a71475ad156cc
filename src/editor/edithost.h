#pragma once

#include "foundation/qrect.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

struct QEvent;

// A list to choose an item from, open beside the running editor until it is destroyed.
class EditList
{
public:
  enum class Answer
  {
    NONE,
    OK,
    CANCEL
  };
  virtual ~EditList() = default;
  virtual int Cursor() const = 0; // -1: nothing is chosen
  // The nearest item there is.
  virtual void SetCursor(int i) = 0;
  // What the event says on the list's buttons.
  virtual Answer AnswerTo(const QEvent& event) = 0;
};

// What the modes and the view ask of the shell that has the window: buttons, HUD, dialogs. Tests answer themselves.
class EditHost
{
public:
  virtual ~EditHost() = default;
  // Shows the operation buttons with these captions and hides the rest.
  virtual void SetOpButtons(std::span<const char* const> labels) = 0;
  // One HUD line, 16 pixels below the last. Only during ModeHud.
  virtual void HudPrint(std::string_view text) = 0;
  // 1 for OK, 0 for Cancel. A null rectangle is the dialog's own.
  virtual int Message(const char* title, const char* text, bool okOnly = false, const QRect* rect = nullptr,
                      const char* okText = nullptr, const char* cancelText = nullptr) = 0;
  // A line of at most maxLength characters, filled with text before. False on Cancel: text stays.
  virtual bool AskText(const char* title, const char* prompt, std::string& text, int maxLength,
                       const QRect* rect = nullptr) = 0;
  // The whole path of a file to read, or to write when the title tells of saving or export. Directory and filter are
  // remembered under the key. False on Cancel: path stays.
  virtual bool AskFile(const char* title, const char* key, std::string& path) = 0;

  // For a mode that shows a motion of its own; EditPreview puts these together.
  virtual int64_t Clock() const = 0; // monotonic milliseconds
  // The whole picture as the state has it, seen at once: scene, overlay, panels. Takes some milliseconds in any case.
  // The window system gets its answers, and no event is dispatched.
  virtual void ShowFrame() = 0;
  // The picture stays; as answering as ShowFrame.
  virtual void Pause(int milliseconds) = 0;
  // Forgets what was pressed since the events were last dispatched. Releases are kept, so that no key stays down.
  virtual void DropPresses() = 0;
  // Of at least one item.
  virtual std::unique_ptr<EditList> OpenList(const char* title, std::span<const std::string> items) = 0;
  // The mode's check box below the operation buttons; each change of mode hides it.
  virtual void ShowModeCheck(const char* label, bool on) = 0;
  virtual bool ModeCheck() const = 0;
  // As if the user had pressed it, once what is going on is done.
  virtual void PostKey(int code) = 0;
  // Shows in colours which nodes collide and which are surface.
  virtual void ColorByFlags(bool on) = 0;
};

// While one lives a mode moves the view by itself. What the user presses meanwhile does nothing, later neither.
class EditPreview
{
public:
  explicit EditPreview(EditHost& shows) : host(shows), start(shows.Clock()) {}
  ~EditPreview() { host.DropPresses(); }
  EditPreview(const EditPreview&) = delete;
  EditPreview& operator=(const EditPreview&) = delete;

  int Elapsed() const { return static_cast<int>(host.Clock() - start); } // milliseconds
  void Restart() { start = host.Clock(); }
  void Show() { host.ShowFrame(); }
  void Pause(int milliseconds) { host.Pause(milliseconds); }

private:
  EditHost& host;
  int64_t start;
};

// An index below count, count itself for the empty answer ("a new one"), or -1 on Cancel. Asks again while the number
// is out of range and the user says OK to that. The field holds current unless that is -1.
int InputIndex(EditHost& host, const char* prompt, int count, int current = -1);
// False on Cancel, and out stays as it was.
bool InputText(EditHost& host, const char* title, const char* prompt, const char* text, std::string& out);
bool InputInt(EditHost& host, const char* title, const char* prompt, int value, int& out);
bool InputFloat(EditHost& host, const char* title, const char* prompt, float value, float& out);

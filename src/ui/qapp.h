#pragma once

#include "foundation/qappcore.h"
#include "foundation/qinfo.h"
#include "foundation/qrect.h"
#include "foundation/qtable.h"
#include "ui/qdisplay.h"
#include "ui/qevent.h"
#include "ui/qshell.h"
#include "ui/qwindowmanager.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

class QFont;
class QGLBatch;
class QGlyphAtlas;

// The application: one a process, reachable as app. It owns the window stack and runs the event loop.
class QApp : public QAppCore
{
public:
  enum CreateFlag : uint32_t
  {
    NO_SHELL = 1,
    NO_BC = 2,
    NO_STATE_MANAGER = 4,
    CREATE_FULLSCREEN = 8,
    FRAME = 16, // title bar and borders of the window system
    HIDE_CURSOR = 64,
    NO_RESIZE = 128,
  };
  using KeyboardHandler = bool (*)(QEvent* event);

  // Opens the display; without one the program ends, reported.
  QApp(std::string_view appName, std::string_view title, std::unique_ptr<QDisplay> display);
  ~QApp() override;
  QApp(const QApp&) = delete;
  QApp& operator=(const QApp&) = delete;
  const char* GetClassName() const override { return "QApp"; }

  // Builds the window stack. False, reported, when there can be no window.
  bool Create();
  // One event, or one idle call. 2: nothing was queued; 1: somebody used the event; 0: nobody did.
  int Run1();
  void Run();     // until Exit
  void RunPoll(); // until the queue is empty
  // The exit procedure, the clean-up procedures, then the end of the process, with the windows gone before.
  void Exit(int status);
  void SetNonStoppingExit();
  void SetTitle(std::string_view newTitle) override; // of the window too

  // Wanted before Create.
  QRect rShell{0, 0, 1280, 1024};
  const QRect* rBC = nullptr; // not owned; null: 45, 45, 320 x 256
  uint32_t createFlags = 164;
  float scale = 0; // device pixels to a pixel of the interface, from 1 to 4 in halves; 0: as the screen suggests
  struct GLSettings
  {
    int width = 640, height = 480, bits = 32, stencil = 8, alpha = 8, depth = 24, hz = 60;
    bool stereo = false;
    float gamma = 1.0f;
  } glSettings;

  bool AddKeyboardHandler(KeyboardHandler handler);
  bool RemoveKeyboardHandler(KeyboardHandler handler);
  void SetIdleProc(std::function<void()> procedure) { idleProc = std::move(procedure); }
  // Sees what no window used; true: handled. Gives back the one before.
  std::function<bool(QEvent*)> SetEventProc(std::function<bool(QEvent*)> procedure);
  const std::function<void()>& GetIdleProc() const { return idleProc; }

  int GetMouseX() const { return mouseX; }
  int GetMouseY() const { return mouseY; }
  uint32_t GetMouseButtons() const { return mouseButtons; } // bit n for button n
  int GetModifiers() const { return modifiers; }
  void ClearModifiers() { modifiers = 0; }
  // The event that is being processed.
  const QEvent& GetEvent() const { return event; }

  QDisplay& GetDisplay() const { return *display; }
  QEventQueue* GetEventQueue() const { return queue.get(); }
  QWindowManager* GetWindowManager() const { return wm.get(); }
  QShell* GetShell() const { return shell.get(); }
  QBC* GetBC() const { return bc.get(); }
  // Never null after Create; without fonts on the machine it draws nothing.
  QFont* GetSystemFont() const { return userFont ? userFont : sysFont.get(); }
  QFont* GetSystemMonoFont() const { return userMonoFont ? userMonoFont : sysFontMono.get(); }
  void SetSystemFont(QFont* font) { userFont = font; } // stays the caller's; null: the built-in one again
  void SetSystemMonoFont(QFont* font) { userMonoFont = font; }
  QGLBatch& GetBatch() const { return *batch; }
  QGlyphAtlas& GetGlyphAtlas() const { return *atlas; }

  // A text of the interface in the user's language; otherwise when the tables don't have it.
  std::string GetText(std::string_view key, std::string_view otherwise);

  // Lets what the platform has become events; true when anything is queued.
  bool PumpEvents();
  // Shows what was asked to be painted, when the application has no idle procedure that does so all the time.
  void PaintIfWanted();

  // Exit was called, and the process goes on: no loop runs any more.
  bool hasExited = false;

private:
  void TrackInput();
  bool OfferKeyboardHandlers();
  bool HandleScreenshotKey();
  void Destroy();

  std::unique_ptr<QDisplay> display;
  std::unique_ptr<QEventQueue> queue;
  std::unique_ptr<QWindowManager> wm;
  std::unique_ptr<QGLBatch> batch;
  std::unique_ptr<QGlyphAtlas> atlas;
  std::unique_ptr<QShell> shell;
  std::unique_ptr<QBC> bc;
  std::unique_ptr<QFont> sysFont;
  std::unique_ptr<QFont> sysFontMono;
  QFont* userFont = nullptr;
  QFont* userMonoFont = nullptr;
  std::function<void()> idleProc;
  std::function<bool(QEvent*)> eventProc;
  DTable<KeyboardHandler, 5> keyHandlers;
  bool nonStopping = false;
  QEvent event;
  int modifiers = 0;
  int mouseX = 0, mouseY = 0;
  uint32_t mouseButtons = 0;
};

// The application of the process; null before it is made and after its end.
extern QApp* app;

#include "ui/qapp.h"

#include "foundation/qfilename.h"
#include "foundation/qreport.h"
#include "ui/qfont.h"
#include "ui/qglbatch.h"
#include "ui/qglyphs.h"
#include "ui/qscreenshot.h"

#include <cstdlib>

QApp* app = nullptr;

namespace {

// On a machine without fonts the data root's own one. Both report what they miss; an interface without letters still
// takes keys.
std::unique_ptr<QFont> MakeSystemFont(const char* family, int points)
{
  constexpr const char* STAND_IN = "data/fonts/eurostile11";
  auto font = std::make_unique<QFont>(family, points);
  if (font->Create() || !QFileExists(std::string(STAND_IN) + ".dtf"))
    return font;
  font = std::make_unique<QFont>(STAND_IN, points, QFont::ROMAN, QFont::NORMAL, QFont::TEXTURE_FONT);
  static_cast<void>(font->Create());
  return font;
}

} // namespace

QApp::QApp(std::string_view name, std::string_view windowTitle, std::unique_ptr<QDisplay> machine) :
    QAppCore(name, windowTitle.empty() ? "Tessel" : windowTitle), display(std::move(machine))
{
  app = this;
  QReports().exitPath = [this](int status) { Exit(status); };
  SetLeave([this](int status) {
    Destroy();
    display->Close();
    std::exit(status);
  });
  if (!display->Open())
    qexit("Can't open X11 display (%s)", display->Name().c_str());
}

QApp::~QApp()
{
  Destroy();
  display->Close();
  if (app == this)
    app = nullptr;
}

// The fonts and windows first: they still reach the manager, the queue and the context.
void QApp::Destroy()
{
  sysFont.reset();
  sysFontMono.reset();
  userFont = userMonoFont = nullptr;
  bc.reset();
  if (atlas)
    atlas->ReleaseTexture();
  shell.reset();
  queue.reset();
  wm.reset();
  batch.reset();
  atlas.reset();
}

bool QApp::Create()
{
  queue = std::make_unique<QEventQueue>();
  wm = std::make_unique<QWindowManager>();
  wm->SetBackgroundColor(QColor(94, 94, 94, 255));
  batch = std::make_unique<QGLBatch>();
  atlas = std::make_unique<QGlyphAtlas>();
  if (!(createFlags & NO_SHELL)) {
    shell = std::make_unique<QShell>(rShell);
    shell->SetText(GetTitle());
    if (createFlags & CREATE_FULLSCREEN)
      shell->PrefFullScreen();
    shell->PrefWM(createFlags & FRAME);
    shell->PrefNoResize(createFlags & NO_RESIZE);
    if (!shell->Create()) {
      shell.reset();
      return false;
    }
    display->ShowPointer(!(createFlags & HIDE_CURSOR));
  }
  if (shell && !(createFlags & NO_BC))
    bc = std::make_unique<QBC>(shell.get(), rBC ? *rBC : QRect{45, 45, 320, 256});
  sysFont = MakeSystemFont("ms sans serif", 10);
  sysFontMono = MakeSystemFont("courier", 8);
  return true;
}

bool QApp::PumpEvents()
{
  if (!queue || !wm)
    return false;
  // One at a time, but for motions: who gets a key is decided by the focus that the events before it have set.
  QEvent raw;
  while (queue->Count() == 0 || raw.type == QEvent::MOTIONNOTIFY) {
    if (!display->NextEvent(raw))
      break;
    wm->Convert(raw);
  }
  return queue->Count() > 0;
}

void QApp::TrackInput()
{
  const auto setModifier = [this](int bit, bool on) { modifiers = on ? modifiers | bit : modifiers & ~bit; };
  switch (event.type) {
  case QEvent::KEYPRESS:
  case QEvent::KEYRELEASE: {
    if (event.xRoot == QEvent::MAGIC)
      return; // a shortcut that a button sends brings its own modifiers
    const bool down = event.type == QEvent::KEYPRESS;
    const int key = QKeyOf(event.n);
    if (key == QKEY_SHIFT_KEY)
      setModifier(QMOD_SHIFT, down);
    else if (key == QKEY_CTRL_KEY)
      setModifier(QMOD_CTRL, down);
    else if (key == QKEY_ALT_KEY)
      setModifier(QMOD_ALT, down);
    event.n = key | modifiers;
    break;
  }
  case QEvent::MOTIONNOTIFY:
    mouseX = event.xRoot;
    mouseY = event.yRoot;
    break;
  case QEvent::BUTTONPRESS:
    mouseButtons |= 1u << (event.n & 31);
    break;
  case QEvent::BUTTONRELEASE:
    mouseButtons &= ~(1u << (event.n & 31));
    break;
  case QEvent::APPFOCUS:
    modifiers = 0;
    break;
  default:
    break;
  }
}

bool QApp::HandleScreenshotKey()
{
  if (event.type != QEvent::KEYPRESS || QKeyOf(event.n) != QKEY_F11)
    return false;
  // With alt as well, as it should be, the X server takes the key for itself: control alone will do.
  const bool whole = event.n & QMOD_CTRL;
  QSaveScreenshot(whole ? static_cast<QWindow*>(shell.get()) : bc.get(), whole);
  return true;
}

bool QApp::OfferKeyboardHandlers()
{
  const DTable<KeyboardHandler, 5> handlers = keyHandlers; // one may remove itself
  for (KeyboardHandler handler : handlers)
    if (handler(&event))
      return true;
  return false;
}

int QApp::Run1()
{
  if (!PumpEvents()) {
    if (display->WantsEnd() && shell) {
      shell->SendEvent(QEvent::CLOSE); // each open dialog takes one as Cancel, and the last ends the program
      return 2;
    }
    if (const std::function<void()> idle = idleProc) {
      idle();
    } else {
      PaintIfWanted();
      display->Sleep(10);
    }
    return 2;
  }
  queue->Get(event);
  TrackInput();
  HandleScreenshotKey();
  if (event.IsKey() && OfferKeyboardHandlers())
    return 1;
  // A handler may run this loop again, for a dialog, and so overwrite the member.
  QEvent current = event;
  if (wm->ProcessEvent(&current) || hasExited)
    return 1;
  event = current;
  if (const std::function<bool(QEvent*)> handler = eventProc; handler && handler(&current))
    return 1;
  if (current.type == QEvent::CLOSE && current.win == shell.get() && !hasExited)
    Exit(0);
  return 0;
}

void QApp::Run()
{
  while (!hasExited)
    Run1();
}

void QApp::RunPoll()
{
  while (!hasExited && PumpEvents())
    Run1();
}

void QApp::PaintIfWanted()
{
  if (!shell || !wm->TakePaintRequest())
    return;
  wm->PaintAll();
  shell->GetCanvas().Swap();
}

void QApp::Exit(int status)
{
  if (hasExited)
    return;
  hasExited = true;
  QAppCore::Exit(status);
  hasExited = !std::exchange(nonStopping, false);
}

void QApp::SetNonStoppingExit()
{
  nonStopping = true;
  QAppCore::SetNonStoppingExit();
}

void QApp::SetTitle(std::string_view newTitle)
{
  QAppCore::SetTitle(newTitle);
  if (shell)
    shell->SetText(newTitle);
}

std::function<bool(QEvent*)> QApp::SetEventProc(std::function<bool(QEvent*)> procedure)
{
  return std::exchange(eventProc, std::move(procedure));
}

bool QApp::AddKeyboardHandler(KeyboardHandler handler)
{
  if (keyHandlers.Add(handler))
    return true;
  QWARN("QApp::AddKeyboardHandler(); out of handlers");
  return false;
}

bool QApp::RemoveKeyboardHandler(KeyboardHandler handler)
{
  for (int i = 0; i < keyHandlers.Count(); ++i)
    if (*keyHandlers.At(i) == handler)
      return keyHandlers.Remove(i);
  QWARN("QApp::RemoveKeyboardHandler(); can't find handler (%p)", reinterpret_cast<void*>(handler));
  return false;
}

std::string QApp::GetText(std::string_view key, std::string_view otherwise)
{
  return GetLanguage().GetString(key, otherwise);
}

#include "platform/qsdldisplay.h"

#include "foundation/qarg.h"
#include "foundation/qreport.h"
#include "platform/qsdlkeys.h"
#include "ui/qkeys.h"
#include "ui/qtext.h"

#include <SDL.h>
#include <algorithm>
#include <cmath>
#include <csignal>
#include <epoxy/gl.h>
#include <string_view>

namespace {

QEvent RawEvent(int type, int n = 0)
{
  QEvent event;
  event.type = type;
  event.n = n;
  return event;
}

volatile std::sig_atomic_t endSignal = 0; // the one that came

void NoteEndSignal(int signal)
{
  endSignal = signal;
}

// SDL would make of them what it makes of the window's close button.
void CatchEndSignals(bool on)
{
  for (const int signal : {SIGTERM, SIGINT})
    std::signal(signal, on ? NoteEndSignal : SIG_DFL);
}

// 1 left, 2 middle, 3 right, as SDL has it; others aren't known to the system.
bool IsKnownButton(int button)
{
  return button >= SDL_BUTTON_LEFT && button <= SDL_BUTTON_RIGHT;
}

} // namespace

QSDLDisplay::~QSDLDisplay()
{
  Close();
}

bool QSDLDisplay::Open()
{
  SDL_SetMainReady();
  // The composition of accents and other scripts is the input method's; its text reaches us as text.
  SDL_SetHint(SDL_HINT_IME_SHOW_UI, "1");
  SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
  SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
  endSignal = 0;
  open = SDL_InitSubSystem(SDL_INIT_VIDEO) == 0;
  if (open) {
    SDL_DisableScreenSaver(); // who looks at a circuit for a while may leave the mouse alone
    CatchEndSignals(true);
  }
  return open;
}

void QSDLDisplay::Close()
{
  DestroyWindow();
  if (cursor)
    SDL_FreeCursor(cursor);
  cursor = nullptr;
  if (open) {
    CatchEndSignals(false);
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
  }
  open = false;
}

std::string QSDLDisplay::Name() const
{
  if (const char* driver = SDL_GetCurrentVideoDriver())
    return driver;
  const char* name = SDL_getenv("DISPLAY");
  return name ? name : "no DISPLAY";
}

namespace {

// What the desktop, or else the screen's own fineness, suggests. Screens of the usual size stay as they are, even fine
// ones: their owners are used to small pixels.
float SuggestedScale(SDL_Window* window)
{
  for (const char* variable : {"GDK_SCALE", "QT_SCALE_FACTOR"})
    if (const char* text = SDL_getenv(variable))
      if (const double factor = SDL_atof(text); factor > 0)
        return static_cast<float>(factor);
  const int screen = window ? std::max(SDL_GetWindowDisplayIndex(window), 0) : 0;
  SDL_DisplayMode mode{};
  float dpi = 0;
  if (SDL_GetDesktopDisplayMode(screen, &mode) != 0 || SDL_GetDisplayDPI(screen, &dpi, nullptr, nullptr) != 0)
    return 1;
  return mode.h >= 1440 ? dpi / 96 : 1;
}

} // namespace

// In halves, and when it is only suggested, so that the window is no larger than the work area.
void QSDLDisplay::ChooseScale(const QDisplayWindow& wanted)
{
  const bool asked = wanted.scale > 0;
  const float factor = asked ? wanted.scale : SuggestedScale(window);
  scale = std::clamp(std::floor(factor * 2 + (asked ? 0.5f : 0.01f)) / 2, 1.0f, 4.0f);
  SDL_Rect area{0, 0, 0, 0};
  if (asked || SDL_GetDisplayUsableBounds(0, &area) != 0)
    return;
  const auto fits = [&] {
    return static_cast<float>(wanted.rect.wid) * scale <= static_cast<float>(area.w) &&
           static_cast<float>(wanted.rect.hgt) * scale <= static_cast<float>(area.h);
  };
  while (scale > 1 && !fits())
    scale -= 0.5f;
}

int QSDLDisplay::ToSystem(int at) const
{
  return static_cast<int>(std::lround(static_cast<float>(at) * scale / density));
}

int QSDLDisplay::FromSystem(int at) const
{
  return static_cast<int>(std::floor(static_cast<float>(at) * density / scale));
}

// Some window systems count in pixels larger than the screen's.
void QSDLDisplay::MeasureDensity()
{
  int points = 0, pixels = 0;
  SDL_GetWindowSize(window, &points, nullptr);
  SDL_GL_GetDrawableSize(window, &pixels, nullptr);
  density = points > 0 && pixels > 0 ? static_cast<float>(pixels) / static_cast<float>(points) : 1;
}

bool QSDLDisplay::CreateWindow(const QDisplayWindow& wanted)
{
  for (const auto& [attribute, value] : {std::pair{SDL_GL_CONTEXT_MAJOR_VERSION, 2},
                                         {SDL_GL_CONTEXT_MINOR_VERSION, 1},
                                         {SDL_GL_CONTEXT_PROFILE_MASK, 0},
                                         {SDL_GL_DOUBLEBUFFER, 1},
                                         {SDL_GL_STEREO, wanted.stereo},
                                         {SDL_GL_DEPTH_SIZE, wanted.depth},
                                         {SDL_GL_STENCIL_SIZE, wanted.stencil}})
    SDL_GL_SetAttribute(attribute, value);
  if (QDebugOptions() & QDEBUG_OPENGL)
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_FLAGS, SDL_GL_CONTEXT_DEBUG_FLAG);
  density = 1;
  ChooseScale(wanted);
  const QRect area = WorkArea();
  const QRect& r = wanted.rect;
  const int x = ToSystem(r.x == -1 ? area.x + (area.wid - r.wid) / 2 : r.x);
  const int y = ToSystem(r.y == -1 ? area.y + (area.hgt - r.hgt) / 2 : r.y);
  const uint32_t style = static_cast<uint32_t>(wanted.resizable * SDL_WINDOW_RESIZABLE |
                                               !wanted.frame * SDL_WINDOW_BORDERLESS | SDL_WINDOW_ALLOW_HIGHDPI);
  const auto create = [&](uint32_t flags) {
    return SDL_CreateWindow(wanted.title.c_str(), x, y, std::max(ToSystem(r.wid), 1), std::max(ToSystem(r.hgt), 1),
                            flags);
  };
  window = create(style | SDL_WINDOW_OPENGL);
  if (!window && wanted.stereo) {
    QERR("Requested STEREO (quadbuffered) but no suitable pixelformat present");
    SDL_GL_SetAttribute(SDL_GL_STEREO, 0);
    window = create(style | SDL_WINDOW_OPENGL);
  }
  if (!window) {
    QERR("(QXWindow) ChoosePixelFormat() failed");
    window = create(style);
  }
  if (!window) {
    QERR("QXWindow: no window can be made; %s", SDL_GetError());
    return false;
  }
  MeasureDensity();
  if (density != 1) {
    scale = std::max(scale, wanted.scale > 0 ? scale : std::floor(density * 2) / 2);
    SDL_SetWindowSize(window, ToSystem(r.wid), ToSystem(r.hgt));
  }
  if (wanted.fullScreen)
    SetFullScreen(wanted);
  SDL_RaiseWindow(window);
  SDL_StartTextInput();
  return true;
}

// The mode as wanted, then without its refresh rate, then the desktop's own.
bool QSDLDisplay::SetFullScreen(const QDisplayWindow& wanted)
{
  SDL_DisplayMode mode{};
  if (SDL_GetDesktopDisplayMode(std::max(SDL_GetWindowDisplayIndex(window), 0), &mode) != 0)
    QWARN("QXWindow: Can't get the display settings");
  mode.w = ToSystem(wanted.rect.wid);
  mode.h = ToSystem(wanted.rect.hgt);
  const auto set = [&](int hz) {
    mode.refresh_rate = hz;
    return SDL_SetWindowDisplayMode(window, &mode) == 0 && SDL_SetWindowFullscreen(window, SDL_WINDOW_FULLSCREEN) == 0;
  };
  const int bits = wanted.bits;
  bool good = set(wanted.hz);
  if (!good) {
    QWARN("QXWindow: Can't set fullscreen mode %dx%dx%d@%d", mode.w, mode.h, bits, wanted.hz);
    good = wanted.hz > 0 && set(0);
  }
  if (good) {
    QLOG("QXWindow: Set fullscreen mode to %dx%dx%d@%d", mode.w, mode.h, bits, mode.refresh_rate);
    return true;
  }
  QERR("QXWindow: Can't set fullscreen mode %dx%dx%d even without setting the frequency", mode.w, mode.h, bits);
  return SDL_SetWindowFullscreen(window, SDL_WINDOW_FULLSCREEN_DESKTOP) == 0;
}

void QSDLDisplay::DestroyWindow()
{
  if (context)
    SDL_GL_DeleteContext(context);
  context = nullptr;
  if (window)
    SDL_DestroyWindow(window);
  window = nullptr;
}

bool QSDLDisplay::CreateContext()
{
  context = window ? SDL_GL_CreateContext(window) : nullptr;
  if (!context) {
    QERR("QGLContext(); wglCreateContext() failed to create OpenGL context; does not look good!");
    return false;
  }
  const auto attribute = [](SDL_GLattr name) {
    int value = 0;
    SDL_GL_GetAttribute(name, &value);
    return value;
  };
  QLOG("Pixfmt %d: %d color bits, %d depthbuffer bits, %d stencil bits, %d alpha, stereo: %d.", 0,
       attribute(SDL_GL_BUFFER_SIZE), attribute(SDL_GL_DEPTH_SIZE), attribute(SDL_GL_STENCIL_SIZE),
       attribute(SDL_GL_ALPHA_SIZE), attribute(SDL_GL_STEREO));
  const auto* renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
  for (const char* software : {"llvmpipe", "softpipe", "swrast", "Software"})
    if (renderer && std::string_view(renderer).find(software) != std::string_view::npos) {
      QWARN("Pixel format (%d) uses software rendering; will be slow!", 0);
      break;
    }
  // The application sleeps between frames itself; waiting for the screen as well would only add delay.
  SDL_GL_SetSwapInterval(0);
  return true;
}

void QSDLDisplay::SelectContext()
{
  if (context)
    SDL_GL_MakeCurrent(window, context);
}

void QSDLDisplay::Swap()
{
  if (context)
    SDL_GL_SwapWindow(window);
}

void QSDLDisplay::SetTitle(std::string_view title)
{
  if (window)
    SDL_SetWindowTitle(window, std::string(title).c_str());
}

void QSDLDisplay::SetIcon(int wid, int hgt, std::span<const uint32_t> rgba)
{
  if (!window || wid <= 0 || hgt <= 0 || rgba.size() < static_cast<size_t>(wid) * static_cast<size_t>(hgt))
    return;
  SDL_Surface* icon = SDL_CreateRGBSurfaceWithFormat(0, wid, hgt, 32, SDL_PIXELFORMAT_RGBA32);
  if (!icon)
    return;
  for (int y = 0; y < hgt; ++y)
    std::copy_n(reinterpret_cast<const uint8_t*>(rgba.data() + y * wid), wid * 4,
                static_cast<uint8_t*>(icon->pixels) + y * icon->pitch);
  SDL_SetWindowIcon(window, icon);
  SDL_FreeSurface(icon);
}

QRect QSDLDisplay::WindowRect() const
{
  QRect r;
  if (window) {
    SDL_GetWindowPosition(window, &r.x, &r.y);
    SDL_GetWindowSize(window, &r.wid, &r.hgt);
    r = {FromSystem(r.x), FromSystem(r.y), FromSystem(r.wid), FromSystem(r.hgt)};
  }
  return r;
}

QRect QSDLDisplay::WorkArea() const
{
  SDL_Rect r{0, 0, 1280, 1024};
  if (open)
    SDL_GetDisplayUsableBounds(0, &r);
  return {FromSystem(r.x), FromSystem(r.y), FromSystem(r.w), FromSystem(r.h)};
}

void QSDLDisplay::MoveWindow(int x, int y)
{
  if (window)
    SDL_SetWindowPosition(window, ToSystem(x), ToSystem(y));
}

void QSDLDisplay::SizeWindow(int wid, int hgt)
{
  if (window)
    SDL_SetWindowSize(window, ToSystem(wid), ToSystem(hgt));
}

void QSDLDisplay::RaiseWindow()
{
  if (window)
    SDL_RaiseWindow(window);
}

void QSDLDisplay::MinimizeWindow()
{
  if (window)
    SDL_MinimizeWindow(window);
}

void QSDLDisplay::Sleep(int milliseconds)
{
  SDL_Delay(static_cast<Uint32>(std::max(milliseconds, 0)));
}

int64_t QSDLDisplay::Clock() const
{
  return static_cast<int64_t>(SDL_GetTicks64());
}

void QSDLDisplay::ShowPointer(bool show)
{
  SDL_ShowCursor(show ? SDL_ENABLE : SDL_DISABLE);
}

void QSDLDisplay::PlacePointer(int x, int y)
{
  if (window)
    SDL_WarpMouseInWindow(window, ToSystem(x), ToSystem(y));
}

void QSDLDisplay::PointerPosition(int& x, int& y) const
{
  SDL_GetGlobalMouseState(&x, &y);
  x = FromSystem(x);
  y = FromSystem(y);
}

void QSDLDisplay::SetPointerShape(QPointerShape shape)
{
  if (shape == cursorShape && cursor)
    return;
  const SDL_SystemCursor system = shape == QPointerShape::TEXT   ? SDL_SYSTEM_CURSOR_IBEAM
                                  : shape == QPointerShape::MOVE ? SDL_SYSTEM_CURSOR_SIZEALL
                                  : shape == QPointerShape::WAIT ? SDL_SYSTEM_CURSOR_WAIT
                                                                 : SDL_SYSTEM_CURSOR_ARROW;
  SDL_Cursor* next = SDL_CreateSystemCursor(system);
  if (!next)
    return;
  SDL_SetCursor(next);
  if (cursor)
    SDL_FreeCursor(cursor);
  cursor = next;
  cursorShape = shape;
}

std::string QSDLDisplay::Clipboard() const
{
  char* text = SDL_GetClipboardText();
  std::string board = text ? text : "";
  SDL_free(text);
  return board;
}

void QSDLDisplay::SetClipboard(std::string_view text)
{
  SDL_SetClipboardText(std::string(text).c_str());
}

bool QSDLDisplay::NextEvent(QEvent& event)
{
  SDL_Event from;
  while (pending.empty() && open && SDL_PollEvent(&from))
    Take(from);
  if (pending.empty())
    return false;
  event = pending.front();
  pending.pop_front();
  return true;
}

void QSDLDisplay::Pump()
{
  if (open)
    SDL_PumpEvents();
}

bool QSDLDisplay::WantsEnd() const
{
  return endSignal != 0;
}

void QSDLDisplay::Take(const SDL_Event& event)
{
  switch (event.type) {
  case SDL_QUIT: // the window's close button
    pending.push_back(RawEvent(QEvent::CLOSE));
    break;
  case SDL_KEYDOWN:
  case SDL_KEYUP:
    TakeKey(event.key);
    break;
  case SDL_TEXTINPUT: // without a key press of its own: an input method has put it together
    TakeText(event.text.text, nullptr);
    break;
  case SDL_MOUSEMOTION:
  case SDL_MOUSEBUTTONDOWN:
  case SDL_MOUSEBUTTONUP:
  case SDL_MOUSEWHEEL:
    TakeMouse(event);
    break;
  case SDL_WINDOWEVENT:
    TakeWindow(event);
    break;
  default:
    break;
  }
}

void QSDLDisplay::TakeKey(const SDL_KeyboardEvent& key)
{
  const SDL_Keycode symbol = key.keysym.sym;
  const bool down = key.type == SDL_KEYDOWN;
  const int number = QKeyFromSDL(symbol, key.keysym.scancode, (key.keysym.mod & KMOD_NUM) != 0);
  if (number == QKEY_CTRL_KEY)
    ctrlHeld = down;
  // The right one chooses the third character of a key on many layouts; that isn't the command key.
  if (symbol == SDLK_LALT)
    altHeld = down;
  if (symbol == SDLK_RALT)
    rightAltHeld = down;
  if (number == QKEY_F4 && altHeld) // the desktop's: what it makes of it comes as CLOSE
    return;
  QEvent event = RawEvent(down ? QEvent::KEYPRESS : QEvent::KEYRELEASE, number);
  // What the key types comes right behind it.
  SDL_Event next;
  if (down && SDL_PeepEvents(&next, 1, SDL_PEEKEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT) == 1 &&
      next.type == SDL_TEXTINPUT) {
    SDL_PeepEvents(&next, 1, SDL_GETEVENT, SDL_TEXTINPUT, SDL_TEXTINPUT);
    if (number == 0)
      event.n = QKEY_TEXT;
    else if (const int typed = QKeyOfCharacter(next.text.text[0]); typed != 0 && next.text.text[1] == 0)
      event.n = typed;
    // With the right alt key a character of its own is text; the key's plain one means alt and the key.
    const auto plain = static_cast<unsigned char>(next.text.text[0]) | 0x20;
    TakeText(rightAltHeld && plain == (symbol | 0x20) ? "" : next.text.text, &event);
    return;
  }
  if (number != 0)
    pending.push_back(event);
}

// The first character goes with the key press, further ones follow on their own.
void QSDLDisplay::TakeText(const char* text, QEvent* press)
{
  const std::string_view all = ctrlHeld || altHeld ? "" : text;
  size_t at = 0;
  if (press) {
    press->text = all.empty() ? 0 : QNextChar(all, at);
    pending.push_back(*press);
  }
  while (at < all.size()) {
    QEvent more = RawEvent(QEvent::KEYPRESS, QKEY_TEXT);
    more.text = QNextChar(all, at);
    pending.push_back(more);
  }
}

void QSDLDisplay::TakeMouse(const SDL_Event& event)
{
  QEvent mouse;
  switch (event.type) {
  case SDL_MOUSEMOTION:
    mouse.type = QEvent::MOTIONNOTIFY;
    mouse.xRoot = FromSystem(event.motion.x);
    mouse.yRoot = FromSystem(event.motion.y);
    break;
  case SDL_MOUSEWHEEL: {
    const int steps = event.wheel.direction == SDL_MOUSEWHEEL_FLIPPED ? -event.wheel.y : event.wheel.y;
    if (steps == 0)
      return;
    mouse.type = QEvent::WHEEL;
    mouse.n = 120 * steps;
    mouse.xRoot = FromSystem(event.wheel.mouseX);
    mouse.yRoot = FromSystem(event.wheel.mouseY);
    break;
  }
  default:
    if (!IsKnownButton(event.button.button))
      return;
    mouse.type = event.type == SDL_MOUSEBUTTONDOWN ? QEvent::BUTTONPRESS : QEvent::BUTTONRELEASE;
    mouse.n = event.button.button;
    mouse.xRoot = FromSystem(event.button.x);
    mouse.yRoot = FromSystem(event.button.y);
    break;
  }
  pending.push_back(mouse);
}

void QSDLDisplay::TakeWindow(const SDL_Event& event)
{
  QEvent told;
  switch (event.window.event) {
  case SDL_WINDOWEVENT_EXPOSED:
  case SDL_WINDOWEVENT_SIZE_CHANGED: {
    told.type = event.window.event == SDL_WINDOWEVENT_EXPOSED ? QEvent::EXPOSE : QEvent::RESIZE;
    const QRect r = WindowRect();
    told.wid = r.wid;
    told.hgt = r.hgt;
    break;
  }
  case SDL_WINDOWEVENT_FOCUS_GAINED:
  case SDL_WINDOWEVENT_FOCUS_LOST:
    told.type = QEvent::APPFOCUS;
    told.n = event.window.event == SDL_WINDOWEVENT_FOCUS_GAINED;
    ctrlHeld = altHeld = rightAltHeld = false;
    break;
  default:
    return;
  }
  pending.push_back(told);
}

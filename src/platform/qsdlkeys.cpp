#include "platform/qsdlkeys.h"

#include "ui/qkeys.h"

#include <SDL.h>
#include <algorithm>
#include <array>
#include <string_view>

namespace {

struct Pair
{
  SDL_Keycode symbol;
  int key;
};

// Letters and digits have the numbers of their characters and aren't listed.
constexpr std::array KEYS = {
    Pair{SDLK_BACKSPACE, QKEY_BACKSPACE},
    Pair{SDLK_TAB, QKEY_TAB},
    Pair{SDLK_RETURN, QKEY_ENTER},
    Pair{SDLK_KP_ENTER, QKEY_ENTER},
    Pair{SDLK_ESCAPE, QKEY_ESC},
    Pair{SDLK_SPACE, QKEY_SPACE},
    Pair{SDLK_LSHIFT, QKEY_SHIFT_KEY},
    Pair{SDLK_RSHIFT, QKEY_SHIFT_KEY},
    Pair{SDLK_LCTRL, QKEY_CTRL_KEY},
    Pair{SDLK_RCTRL, QKEY_CTRL_KEY},
    Pair{SDLK_LALT, QKEY_ALT_KEY},
    Pair{SDLK_RALT, QKEY_ALT_KEY},
    Pair{SDLK_PAUSE, QKEY_PAUSE},
    Pair{SDLK_CAPSLOCK, QKEY_CAPSLOCK},
    Pair{SDLK_NUMLOCKCLEAR, QKEY_NUMLOCK},
    Pair{SDLK_SCROLLLOCK, QKEY_SCROLLLOCK},
    Pair{SDLK_PRINTSCREEN, QKEY_PRINT},
    Pair{SDLK_APPLICATION, QKEY_MENU},
    Pair{SDLK_PAGEUP, QKEY_PGUP},
    Pair{SDLK_PAGEDOWN, QKEY_PGDN},
    Pair{SDLK_END, QKEY_END},
    Pair{SDLK_HOME, QKEY_HOME},
    Pair{SDLK_LEFT, QKEY_LEFT},
    Pair{SDLK_UP, QKEY_UP},
    Pair{SDLK_RIGHT, QKEY_RIGHT},
    Pair{SDLK_DOWN, QKEY_DOWN},
    Pair{SDLK_INSERT, QKEY_INSERT},
    Pair{SDLK_DELETE, QKEY_DELETE},
    Pair{SDLK_KP_0, QKEY_KP_0},
    Pair{SDLK_KP_MULTIPLY, QKEY_KP_MULTIPLY},
    Pair{SDLK_KP_PLUS, QKEY_KP_ADD},
    Pair{SDLK_KP_MINUS, QKEY_KP_SUBTRACT},
    Pair{SDLK_KP_PERIOD, QKEY_KP_DECIMAL},
    Pair{SDLK_KP_COMMA, QKEY_KP_DECIMAL},
    Pair{SDLK_KP_DIVIDE, QKEY_KP_DIVIDE},
    Pair{SDLK_SEMICOLON, QKEY_SEMICOLON},
    Pair{SDLK_COLON, QKEY_SEMICOLON},
    Pair{SDLK_EQUALS, QKEY_PLUS},
    Pair{SDLK_PLUS, QKEY_PLUS},
    Pair{SDLK_COMMA, QKEY_COMMA},
    Pair{SDLK_MINUS, QKEY_MINUS},
    Pair{SDLK_UNDERSCORE, QKEY_MINUS},
    Pair{SDLK_PERIOD, QKEY_PERIOD},
    Pair{SDLK_SLASH, QKEY_SLASH},
    Pair{SDLK_BACKQUOTE, QKEY_GRAVE},
    Pair{SDLK_LEFTBRACKET, QKEY_LBRACKET},
    Pair{SDLK_BACKSLASH, QKEY_BACKSLASH},
    Pair{SDLK_RIGHTBRACKET, QKEY_RBRACKET},
    Pair{SDLK_QUOTE, QKEY_QUOTE},
};

// What the keypad's digits are without Num Lock, from 0 to 9 and the point.
constexpr std::array KEYPAD_CURSOR = {QKEY_INSERT, QKEY_END,  QKEY_DOWN, QKEY_PGDN, QKEY_LEFT,  QKEY_CLEAR,
                                      QKEY_RIGHT,  QKEY_HOME, QKEY_UP,   QKEY_PGUP, QKEY_DELETE};

int FromSymbol(SDL_Keycode symbol)
{
  if (symbol >= SDLK_a && symbol <= SDLK_z)
    return symbol - SDLK_a + 'A';
  if (symbol >= SDLK_0 && symbol <= SDLK_9)
    return symbol;
  if (symbol >= SDLK_F1 && symbol <= SDLK_F12)
    return symbol - SDLK_F1 + QKEY_F1;
  if (symbol >= SDLK_KP_1 && symbol <= SDLK_KP_9)
    return symbol - SDLK_KP_1 + QKEY_KP_0 + 1;
  const auto* found = std::find_if(KEYS.begin(), KEYS.end(), [=](const Pair& p) { return p.symbol == symbol; });
  return found == KEYS.end() ? 0 : found->key;
}

// By where the key lies, as on an English keyboard.
int FromPlace(int scanCode)
{
  if (scanCode >= SDL_SCANCODE_A && scanCode <= SDL_SCANCODE_Z)
    return scanCode - SDL_SCANCODE_A + 'A';
  if (scanCode >= SDL_SCANCODE_1 && scanCode <= SDL_SCANCODE_9)
    return scanCode - SDL_SCANCODE_1 + '1';
  switch (scanCode) {
  case SDL_SCANCODE_0:
    return '0';
  case SDL_SCANCODE_MINUS:
    return QKEY_MINUS;
  case SDL_SCANCODE_EQUALS:
    return QKEY_PLUS;
  case SDL_SCANCODE_LEFTBRACKET:
    return QKEY_LBRACKET;
  case SDL_SCANCODE_RIGHTBRACKET:
    return QKEY_RBRACKET;
  case SDL_SCANCODE_BACKSLASH:
    return QKEY_BACKSLASH;
  case SDL_SCANCODE_SEMICOLON:
    return QKEY_SEMICOLON;
  case SDL_SCANCODE_APOSTROPHE:
    return QKEY_QUOTE;
  case SDL_SCANCODE_GRAVE:
    return QKEY_GRAVE;
  case SDL_SCANCODE_COMMA:
    return QKEY_COMMA;
  case SDL_SCANCODE_PERIOD:
    return QKEY_PERIOD;
  case SDL_SCANCODE_SLASH:
    return QKEY_SLASH;
  default:
    return 0;
  }
}

} // namespace

int QKeyFromSDL(int32_t symbol, int scanCode, bool numLock)
{
  const int key = FromSymbol(symbol);
  if (key == 0)
    return FromPlace(scanCode);
  if (!numLock && key >= QKEY_KP_0 && key <= QKEY_KP_9)
    return KEYPAD_CURSOR[static_cast<size_t>(key - QKEY_KP_0)];
  if (!numLock && key == QKEY_KP_DECIMAL)
    return KEYPAD_CURSOR.back();
  return key;
}

int QKeyOfCharacter(char c)
{
  constexpr std::string_view MARKS = ";=,-./`[\\]'";
  const size_t at = MARKS.find(c);
  return at == std::string_view::npos || c == 0 ? 0 : FromSymbol(c);
}

#pragma once

// The numbers by which the whole system knows keys: virtual key numbers in the low 16 bits of a key code, modifiers
// above. Letters are their upper-case characters ('A' to 'Z'), digits '0' to '9'.
enum QKey : int
{
  QKEY_BACKSPACE = 8,
  QKEY_TAB = 9,
  QKEY_CLEAR = 12, // the keypad's 5 without Num Lock
  QKEY_ENTER = 13, // the keypad's as well
  QKEY_SHIFT_KEY = 16,
  QKEY_CTRL_KEY = 17,
  QKEY_ALT_KEY = 18,
  QKEY_PAUSE = 19,
  QKEY_CAPSLOCK = 20,
  QKEY_ESC = 27,
  QKEY_SPACE = 32,
  QKEY_PGUP = 33,
  QKEY_PGDN = 34,
  QKEY_END = 35,
  QKEY_HOME = 36,
  QKEY_LEFT = 37,
  QKEY_UP = 38,
  QKEY_RIGHT = 39,
  QKEY_DOWN = 40,
  QKEY_PRINT = 44,
  QKEY_INSERT = 45,
  QKEY_DELETE = 46,
  QKEY_MENU = 93,
  QKEY_KP_0 = 96, // to 105 for keypad 9
  QKEY_KP_9 = 105,
  QKEY_KP_MULTIPLY = 106,
  QKEY_KP_ADD = 107,
  QKEY_KP_SUBTRACT = 109,
  QKEY_KP_DECIMAL = 110,
  QKEY_KP_DIVIDE = 111,
  QKEY_F1 = 112, // to 123 for F12
  QKEY_F4 = 115,
  QKEY_F10 = 121,
  QKEY_F11 = 122,
  QKEY_F12 = 123,
  QKEY_NUMLOCK = 144,
  QKEY_SCROLLLOCK = 145,
  QKEY_SEMICOLON = 186,
  QKEY_PLUS = 187, // the key of "=" and "+"
  QKEY_COMMA = 188,
  QKEY_MINUS = 189,
  QKEY_PERIOD = 190,
  QKEY_SLASH = 191,
  QKEY_GRAVE = 192,
  QKEY_LBRACKET = 219,
  QKEY_BACKSLASH = 220,
  QKEY_RBRACKET = 221,
  QKEY_QUOTE = 222,
  QKEY_TEXT = 231, // no key of its own: the event carries a typed character alone
};

// Modifier bits of a key code.
constexpr int QMOD_SHIFT = 0x10000;
constexpr int QMOD_CTRL = 0x40000;
constexpr int QMOD_ALT = 0x80000;
constexpr int QMOD_ALL = QMOD_SHIFT | QMOD_CTRL | QMOD_ALT;

constexpr int QKeyOf(int code)
{
  return code & 0xFFFF;
}
constexpr bool QIsModifierKey(int key)
{
  return key >= QKEY_SHIFT_KEY && key <= QKEY_ALT_KEY;
}

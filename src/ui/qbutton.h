#pragma once

#include "foundation/qstring.h"
#include "ui/qcontrol.h"

#include <concepts>

class DTexture;

// Sends CLICK when it is pressed and released, or when its shortcut key is pressed.
// A caption "$PLAY", "$REVERSE", "$REWIND", "$FORWARD", "$LEFT", "$RIGHT", "$UP" or "$DOWN" is a drawn arrow.
class QButton : public QControl
{
public:
  enum ButtonFlag : uint32_t
  {
    NO_FACE = 0x02,         // nothing but an edge
    SHORTCUT_PASSES = 0x04, // the shortcut key goes on to others
    SQUARE = 0x08,
    MOUSE = 0x10, // reacts to the mouse
    HIGHLIGHT = 0x20,
    DEFAULT = 0x80, // a wider edge
  };
  enum State
  {
    UP,
    PRESSED,
    PRESSED_OUTSIDE
  };

  // The interface's look: white on teal.
  QButton(QWindow* owner, const QRect& area, std::string_view caption);
  // A quieter look, in black and greys.
  template <std::same_as<qstring> S>
  QButton(QWindow* owner, const QRect& area, const S& caption) : QButton(owner, area, caption.View())
  {
    colors = {{0, 0, 0}, {128, 128, 128}, {224, 224, 224, 190}};
  }
  const char* GetClassName() const override { return "QButton"; }
  void Paint(const QRect* r = nullptr) override;
  bool Event(QEvent* event) override;
  bool EvButtonPress(int button, int x, int y) override;
  bool EvButtonRelease(int button, int x, int y) override;
  bool EvKeyPress(int key, int x, int y) override;
  // Space and enter press the button that has the focus.
  bool EvKeyRelease(int key, int x, int y) override;
  bool EvMotionNotify(int x, int y) override;
  bool EvFocusOut(QEvent* event) override;

  // A key code with modifiers; 0: none. It works without the focus.
  void SetShortcut(int key);
  int GetShortcut() const { return shortcut; }
  State GetState() const { return state; }
  // Played as if by hand: pressed, and after a moment released over the middle.
  void Press();
  // Pictures for up and down in place of the face; not owned, null for the face.
  void SetTextures(DTexture* up, const QRect& upSource, DTexture* down, const QRect& downSource);

  uint32_t buttonFlags = MOUSE;
  int eventType = QEvent::CLICK; // KEYPRESS: sends its shortcut as a key press
  struct Colors
  {
    QColor text{255, 255, 255};
    QColor shadow{255, 255, 255, 28}; // the bevel's lower edges
    QColor shine{255, 255, 255, 84};  // and its upper ones
  } colors;

protected:
  void PaintCaption(const QRect& face, int offset);

private:
  struct Picture
  {
    DTexture* texture = nullptr;
    QRect source;
  };
  void SendClick();
  void PaintFace(const QRect& face, bool down);
  bool PaintPicture(const Picture& picture);

  State state = UP;
  int shortcut = 0;
  int heldKey = 0; // that pressed it and hasn't been let go
  Picture up, down;
};

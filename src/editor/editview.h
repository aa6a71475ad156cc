#pragma once

#include "geometry/dvector.h"

#include <glm/mat4x4.hpp>

struct EditState;
struct EditTransform;
struct QEvent;

// How a mouse position becomes a point on the scenery, and how mouse and keys move the camera.
class EditView
{
public:
  explicit EditView(EditState& owner) : state(owner) {}

  // The matrices of the last frame.
  void SetMatrices(const DMatrix4& modelView, const DMatrix4& projection);
  // The shell's size in pixels.
  void SetShellSize(int wid, int hgt);
  int ShellHeight() const { return shellHeight; }

  // A position in the shell becomes one in viewRect.
  void MouseToView(int& x, int& y) const;
  // Window coordinates with y up and depth 0..1. On failure logs and gives false with a zero point.
  bool Unproject(const DVector3& window, DVector3& world) const;
  // The nearest point of the scenery under window position (x, y), y up. Nothing hit: out stays.
  void PickRay(int x, int y, const EditTransform& from, DVector3& out);

  void GotoPickStart();
  void FocusSelection();
  void OrbitApply(float dYaw, float dPitch);
  // ObjectMode on: pivot where the camera is, at a distance of 20.
  void StartObjectMode();
  // Selected nodes blink; this makes them visible before the list is emptied or left.
  void ShowSelectedNodes();
  void ClearSelectedNodes();
  // Nothing happens to a node that is selected already.
  void AddSelectedNode(int index);

  // The four kinds of mouse event, with a track present; x and y in the shell. modifiers as at the event.
  void MousePress(int button, int x, int y, int modifiers);
  void MouseRelease(int button);
  void MouseMotion(int x, int y, int modifiers);
  void Wheel(int delta, int modifiers);

private:
  void Pan(float ax, float ay, float step, int modifiers);
  void MotionBoth(int dy, float step, int modifiers);
  void MotionRight(int dx, int dy, int modifiers);
  void RememberNode(int index);
  void PickTo(int x, int y, DVector3& out);

  EditState& state;
  glm::dmat4 modelView{1.0};
  glm::dmat4 projection{1.0};
  int shellWidth = 640;
  int shellHeight = 480;
};

// The editor's picture: scene, overlay, HUD and panels, in this order.

#include "editor/editshell.h"

#include "editor/editwidgets.h"
#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "runtime/raudio.h"
#include "runtime/rmanager.h"
#include "runtime/rscene.h"
#include "scene/dcamera.h"
#include "scene/dfps.h"
#include "scene/worldrenderer.h"
#include "scene/worldscene.h"
#include "track/rtrackvrml.h"
#include "ui/qapp.h"
#include "ui/qfont.h"
#include "ui/qgloverlay.h"
#include "ui/qkeys.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace {

constexpr int HUD_STEP = 16;
constexpr int FRAME_REST = 10; // milliseconds between two pictures, for the rest of the machine
const QColor WHITE(255, 255, 255);
const QColor YELLOW(255, 255, 0);
const QColor PICK_TOP(255, 255, 128);
const QColor GREEN(0, 255, 0);

[[gnu::format(printf, 1, 2)]] std::string Text(const char* format, ...)
{
  char buffer[512];
  va_list args;
  va_start(args, format);
  std::vsnprintf(buffer, sizeof buffer, format, args);
  va_end(args);
  return buffer;
}

} // namespace

void EditShell::idleFunc()
{
  app.GetDisplay().Sleep(FRAME_REST);
  PaintAll();
  if (!state.curTrack)
    return;
  const EditMode* mode = CurrentMode();
  if (!mode || !mode->HasDialog())
    MoveCamera();
  RScene& scene = *manager->GetScene();
  scene.SetCamMode(RScene::CAM_MODE_FREE);
  scene.listener.position = state.camera.transform.pos;
  scene.listener.velocity = DVector3(0.0f);
  if (state.trackReady) // a load at the start paints before the camera is where it was left
    state.curTrack->UpdateAudio(state.camera.transform.pos);
  manager->GetAudio()->SetListener(state.camera.transform.pos, manager->GetInfo().GetFloat("audio.rolloff_factor"));
}

void EditShell::PaintAll()
{
  PaintPicture();
  app.GetShell()->GetCanvas().Swap();
}

void EditShell::PaintPicture()
{
  state.now = app.GetDisplay().Clock();
  QShell& shell = *app.GetShell();
  view.SetShellSize(shell.GetWidth(), shell.GetHeight());
  if (!state.curTrack) {
    shell.GetCanvas().SetColor(PX_BLACK);
    shell.GetCanvas().Clear();
    PaintDialog();
    return;
  }
  PrepareScene();
  if (state.trackReady) {
    manager->SetTime(static_cast<int>(app.GetDisplay().Clock() - startTime));
    state.curTrack->marshalPosts.Update(manager->GetTime());
    if (EditMode* mode = CurrentMode())
      mode->ModeUpdate();
    manager->GetScene()->Paint();
    PaintOverlay(0);
    if (!firstFrameLogged)
      QLOG("First frame of '%s' %d ms after the editor's set-up began\n", state.curTrack->trackName.c_str(),
           manager->GetTime());
    firstFrameLogged = true;
  } else {
    shell.GetCanvas().SetColor(PX_BLACK);
    shell.GetCanvas().Clear();
  }
  PaintMiniMap();
  PaintPanels();
}

void EditShell::KeepFrame()
{
  PaintPicture();
  QShell& shell = *app.GetShell();
  shell.GetCanvas().Flush();
  const float scale = app.GetDisplay().Scale();
  const auto device = [=](int size) { return static_cast<int>(std::lround(static_cast<float>(size) * scale)); };
  kept.Take(device(shell.GetWidth()), device(shell.GetHeight()));
}

void EditShell::PaintKept()
{
  kept.Paint();
  PaintDialog();
  app.GetShell()->GetCanvas().Swap();
}

int64_t EditShell::Clock() const
{
  return app.GetDisplay().Clock();
}

void EditShell::ShowFrame()
{
  Pause(FRAME_REST);
  PaintAll();
}

void EditShell::Pause(int milliseconds)
{
  app.GetDisplay().Pump();
  app.GetDisplay().Sleep(milliseconds);
}

void EditShell::DropPresses()
{
  QEvent event;
  while (app.GetDisplay().NextEvent(event)) {
    const bool pressed = event.type == QEvent::KEYPRESS && !QIsModifierKey(QKeyOf(event.n));
    if (!pressed && event.type != QEvent::BUTTONPRESS && event.type != QEvent::WHEEL)
      app.GetWindowManager()->Convert(event);
  }
}

// The shell's widgets aren't painted without a track, but what asks the user must be seen.
void EditShell::PaintDialog()
{
  const QWindowManager& wm = *app.GetWindowManager();
  const QWindow* dialog = wm.OpenDialog();
  QCanvas& cv = app.GetShell()->GetCanvas();
  cv.Begin();
  for (QWindow* w : wm.Windows())
    if (dialog && w->compound == dialog && w->IsVisible())
      w->Paint();
  cv.End();
}

void EditShell::PrepareScene()
{
  manager->SetFrameSize(state.frameWidth, state.frameHeight);
  // The scene is as fine as the screen, whatever size the interface's pixels have.
  const float scale = app.GetDisplay().Scale();
  const auto device = [=](int size) { return static_cast<int>(std::lround(static_cast<float>(size) * scale)); };
  manager->GetScene()->SetView(director.get(), device(state.frameWidth), device(state.frameHeight));
  const EditTransform& t = state.camera.transform;
  viewCamera->Go(t.pos, DVector3(0.0f), t.yaw, t.pitch, t.roll, DCamera::METHOD_MATRIX);
  viewCamera->SetFOV(state.camera.fov);
  viewCamera->SetAspect(static_cast<float>(state.frameWidth) / static_cast<float>(std::max(state.frameHeight, 1)));
  viewCamera->CalcModelViewMatrix();
  if (state.curTrack->sun)
    manager->GetWorld()->sun.position = state.curTrack->sun->position;
  view.SetMatrices(viewCamera->GetModelView(), viewCamera->GetProjection());
}

void EditShell::PaintOverlay(int flags)
{
  static_cast<void>(flags);
  app.GetShell()->GetCanvas().Set3D();
  QGLOverlay overlay(app.GetShell()->GetCanvas());
  if (EditMode* mode = CurrentMode())
    mode->ModePaint(overlay);
  overlay.Flush();
  if (state.paintVertices)
    PaintAllVertices(overlay);
  PaintPickLine(overlay);
  fps->FrameDone();
  const int both = QMOD_CTRL | QMOD_SHIFT;
  if ((app.GetModifiers() & both) != both)
    PaintHud();
}

void EditShell::PaintAllVertices(DOverlay& overlay)
{
  if (verticesNodes != state.curTrack->nodes.Count()) {
    vertices.clear();
    for (const auto& node : state.curTrack->nodes)
      if (node->Geode())
        for (const auto& geob : node->Geode()->geob)
          vertices.insert(vertices.end(), geob->vertex.begin(), geob->vertex.end());
    verticesNodes = state.curTrack->nodes.Count();
  }
  DOverlayStyle style;
  style.color = GREEN;
  style.width = 2;
  overlay.Points(vertices, style);
}

void EditShell::PaintPickLine(DOverlay& overlay) const
{
  const DVector3 up(0, 1, 0);
  DOverlayStyle style;
  style.width = 1.5f;
  style.blend = true;
  style.color = WHITE;
  overlay.Line(state.pickStart, state.pickStart + up, style);
  style.color = YELLOW;
  overlay.Line(state.pickEnd, state.pickEnd + up, style);
  style.color = PICK_TOP;
  overlay.Line(state.pickStart + up, state.pickEnd + up, style);
}

void EditShell::PaintPanels()
{
  QShell& shell = *app.GetShell();
  QCanvas& cv = shell.GetCanvas();
  cv.Begin();
  cv.Set2D();
  cv.SetBlending(true);
  cv.SetColor(0, 0, 0, 230);
  const int bottom = widgets->Command0().y - 10;
  const int right = widgets->Mode0().x - 10;
  cv.Rectfill(0, bottom, shell.GetWidth(), shell.GetHeight() - bottom);
  cv.Rectfill(right, 0, shell.GetWidth() - right, shell.GetHeight());
  app.GetWindowManager()->PaintChildren();
  cv.End();
}

void EditShell::BakeMiniMap()
{
  RMiniMap& map = manager->GetMiniMap();
  map.Clear();
  if (!state.curTrack || !(manager->flags & RManager::MINIMAP))
    return;
  const RSplineRep& road = state.curTrack->splines;
  std::vector<RMiniMap::Edge> edges;
  for (const RSplineLine& line : road.lines)
    edges.push_back({line.left, line.right});
  const int* at = manager->minimap;
  map.Bake(edges, road.flags & RSplineRep::CLOSED, road.paintStart, road.paintEnd, {at[0], at[1], at[2], at[3]});
}

// The road in white and the camera in red.
void EditShell::PaintMiniMap()
{
  const RMiniMap& map = manager->GetMiniMap();
  if (map.IsEmpty())
    return;
  QCanvas& cv = app.GetShell()->GetCanvas();
  const auto lines = map.GetLines();
  const auto pixel = [](float at) { return static_cast<int>(std::lround(at)); };
  cv.Begin();
  cv.Set2D();
  cv.SetColor(PX_WHITE);
  for (size_t i = 0; i + 1 < lines.size(); i += 2)
    cv.Line(pixel(lines[i].x), pixel(lines[i].y), pixel(lines[i + 1].x), pixel(lines[i + 1].y));
  const DVector2 camera = map.ToMap(state.camera.transform.pos);
  cv.SetColor(255, 0, 0);
  cv.Rectfill(pixel(camera.x) - 2, pixel(camera.y) - 2, 5, 5);
  cv.End();
}

void EditShell::PaintHud()
{
  QCanvas& cv = app.GetShell()->GetCanvas();
  cv.Begin();
  cv.Set2D();
  cv.SetFont(app.GetSystemFont());
  hudY = state.viewRect.y + 5;
  hudLines.clear();
  const EditTransform& t = state.camera.transform;
  const DVector3 a = state.pickStart, d = state.pickEnd - state.pickStart;
  HudPrint(Text("FPS: %.2f", static_cast<double>(fps->GetFPS())));
  HudPrint(Text("Camera pos: %.2f %.2f %.2f", double(t.pos.x), double(t.pos.y), double(t.pos.z)));
  HudPrint(Text("Camera angle: pitch %.2f yaw %.2f roll %.2f", double(t.pitch), double(t.yaw), double(t.roll)));
  HudPrint(Text("Camera FOV: %.1f", double(state.camera.fov)));
  HudPrint(Text("Camera mode: %s", state.camera.ModeName()));
  HudPrint(Text("Pick line: (%.2f, %.2f, %.2f) - delta (%.2f, %.2f, %.2f) - Length: %.2f", double(a.x), double(a.y),
                double(a.z), double(d.x), double(d.y), double(d.z), double(glm::length(d))));
  HudPrint("");
  if (EditMode* mode = CurrentMode())
    mode->ModeHud();
  cv.End();
}

void EditShell::HudPrint(std::string_view text)
{
  if (state.hudVisible) {
    QCanvas& cv = app.GetShell()->GetCanvas();
    const int x = state.viewRect.x + 15;
    cv.SetColor(0, 0, 0);
    cv.Text(text, x + 2, hudY + 2);
    cv.SetColor(255, 255, 255);
    cv.Text(text, x, hudY);
    hudLines.emplace_back(text);
  }
  hudY += HUD_STEP;
}

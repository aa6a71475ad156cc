#include "editor/editshell.h"

#include "editor/editicon.h"
#include "editor/editmodes.h"
#include "editor/editwidgets.h"
#include "editor/modelsmodelist.h"
#include "foundation/qdbgsetup.h"
#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qlog.h"
#include "foundation/qreport.h"
#include "geometry/dglobal.h"
#include "runtime/qsample.h"
#include "runtime/rcar.h"
#include "runtime/rmanager.h"
#include "runtime/rscene.h"
#include "scene/dcamera.h"
#include "scene/ddirector.h"
#include "scene/dfps.h"
#include "scene/worldrenderer.h"
#include "scene/worldscene.h"
#include "track/rtrackvrml.h"
#include "ui/qapp.h"
#include "ui/qdlgfile.h"
#include "ui/qfont.h"
#include "ui/qkeys.h"
#include "ui/qmessagebox.h"
#include "ui/qtitlebar.h"
#include "ui/qwindowmanager.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr const char* PREVIEW_CAR = "lambomurcielago"; // a directory's name, which need not be there
constexpr const char* FONT = "data/fonts/eurostile11";
constexpr int ANIMATED_MODE = 6;
constexpr int TRAFFIC_MODE = 7;

} // namespace

EditShell::EditShell(QApp& application, std::unique_ptr<QInfo> info) :
    app(application), settings(std::move(info)), view(state)
{
  state.settings = settings.get();
}

EditShell::~EditShell() = default;

void EditShell::Configure()
{
  state.viewRect.wid = settings->GetInt("view.width", 512);
  state.viewRect.hgt = settings->GetInt("view.height", 512);
  state.frameWidth = settings->GetInt("resolution.width", 640);
  state.frameHeight = settings->GetInt("resolution.height", 480);
  app.createFlags |= QApp::NO_BC | QApp::NO_STATE_MANAGER | QApp::NO_RESIZE;
  app.rBC = &state.viewRect;
  app.rShell = {settings->GetInt("resolution.x", -1), settings->GetInt("resolution.y", -1), state.frameWidth,
                state.frameHeight};
  app.scale = settings->GetFloat("resolution.scale");
  if (settings->GetInt("resolution.fullscreen"))
    app.createFlags |= QApp::CREATE_FULLSCREEN;
  app.glSettings.width = state.frameWidth;
  app.glSettings.height = state.frameHeight;
  app.glSettings.bits = settings->GetInt("resolution.bits", 32);
}

// What the layers below ask or tell gets the program's own dialogs.
void EditShell::InstallMessages()
{
  QReports().systemMessage = [this](std::string_view title, std::string_view text, bool okOnly) {
    return Message(std::string(title).c_str(), std::string(text).c_str(), okOnly, nullptr, nullptr, nullptr) == 0;
  };
  QReports().messageBox = [this](std::string_view title, std::string_view text) {
    Message(std::string(title).c_str(), std::string(text).c_str(), true, nullptr, nullptr, nullptr);
  };
}

void EditShell::Setup()
{
  startTime = app.GetDisplay().Clock();
  app.GetDisplay().SetIcon(EDIT_ICON_SIZE, EDIT_ICON_SIZE, EditIcon());
  app.RunPoll();
  InstallMessages();
  state.paintVertices = false;
  DGlobals().flags |= 1;
  font = std::make_unique<QFont>(FONT, 11, QFont::ROMAN, QFont::NORMAL, QFont::TEXTURE_FONT);
  if (font->Create()) {
    font->SetScale(1.0f, 1.0f);
    app.SetSystemFont(font.get());
  }
  titleBar = std::make_unique<QTitleBar>(app.GetShell(), VERSION);
  state.camera = EditCamera();
  manager = std::make_unique<RManager>(1);
  manager->LoadConfig();
  manager->SetCheckProblems([this] { EndOnProblems(); });
  CreateView();
  if (!previewCar)
    previewCar = std::make_unique<RCar>(PREVIEW_CAR, 0);
  state.previewCar = previewCar.get();
  ResetTrack();
  fps = std::make_unique<DFPS>(0);
  widgets = std::make_unique<EditWidgets>(*app.GetShell(), state.viewRect);
  CreateModes();
  app.RunPoll();
  app.SetIdleProc([this] { idleFunc(); });
  app.SetExitProc([this](int) { exitFunc(); });
  app.SetEventProc([this](QEvent* event) { return eventFunc(*event); });
  if (settings->GetInt("settings.auto_load"))
    SelectTrack(settings->GetStringDirect("track.lasttrack"));
  SetMode(settings->GetInt("settings.mode"));
  ReadTransform();
  manager->CheckProblems();
}

void EditShell::EndOnProblems()
{
  std::string title, text;
  if (!QProblemsEndRun(title, text))
    return;
  static_cast<void>(QSystemMessage(title, text, true));
  QLogCloseLast();
  QNotePad(QLogLastPath());
  app.Exit(0);
}

void EditShell::CreateView()
{
  WorldRenderer& renderer = *manager->GetWorld()->GetRenderer();
  if (renderer.GetSurroundMethod() != 0) {
    qwarn(QFileNameOf(__FILE__), "Setup", __LINE__, "surround.method must be 0 for Pavex - enforcing for this run");
    renderer.SetSurroundMethod(0);
  }
  renderer.CreateStats();
  viewCamera = std::make_unique<DCameraAnimated>();
  rail = std::make_unique<DRail>();
  rail->AddCamera(viewCamera.get());
  director = std::make_unique<DDirector>();
  director->AddRail(rail.get());
  director->SetRail(0, 0);
  manager->GetScene()->SetDirector(RScene::CAM_MODE_FREE, director.get());
}

void EditShell::CreateModes()
{
  for (size_t i = 0; i < modes.size(); ++i)
    modes[i] = MakeEditMode(static_cast<int>(i), state, *this, view);
}

void EditShell::ReadTransform()
{
  float t[7] = {};
  settings->GetFloats("settings.transform", 7, t);
  state.camera.transform = {{t[0], t[1], t[2]}, t[3], t[4], t[5]};
  state.camera.fov = t[6];
}

void EditShell::StoreSettings()
{
  const EditTransform& t = state.camera.transform;
  const float values[7] = {t.pos.x, t.pos.y, t.pos.z, t.pitch, t.yaw, t.roll, state.camera.fov};
  settings->SetInt("settings.mode", state.curMode);
  settings->SetFloats("settings.transform", values, 7);
  for (const auto& mode : modes)
    if (mode)
      mode->StoreSettings(*settings);
}

void EditShell::exitFunc()
{
  qlog(QFileNameOf(__FILE__), "exitfunc", __LINE__, "exitFunc()\n");
  app.SetIdleProc(nullptr); // writing the settings may still ask, and then nothing of this may be painted
  app.SetEventProc(nullptr);
  StoreSettings();
  for (auto& mode : modes)
    mode.reset();
  state.previewCar = nullptr;
  previewCar.reset();
  widgets.reset();
  state.SelectedNodes.clear();
  state.curTrack = nullptr;
  state.trackReady = false;
  manager.reset();
  director.reset();
  rail.reset();
  viewCamera.reset();
  titleBar.reset();
  state.settings = nullptr;
  settings.reset();
  QSampleCloseSystem();
  QReports().systemMessage = nullptr;
  QReports().messageBox = nullptr;
  fps.reset();
  app.SetSystemFont(nullptr);
  font.reset();
  DResetGlobals();
  qlog(QFileNameOf(__FILE__), "exitfunc", __LINE__, "exitFunc() RET\n");
}

EditMode* EditShell::CurrentMode()
{
  return state.curMode >= 0 && state.curMode < MODES ? modes[static_cast<size_t>(state.curMode)].get() : nullptr;
}

void EditShell::SetMode(int n)
{
  state.paintVertices = false;
  state.curMode = n;
  view.ShowSelectedNodes();
  widgets->HideModeCheck();
  if (EditMode* mode = CurrentMode()) {
    ColorByFlags(false); // the one mode that wants it says so
    mode->ModeSetup();
  }
  widgets->MarkMode(n);
}

void EditShell::SetOpButtons(std::span<const char* const> labels)
{
  widgets->SetOpButtons(labels);
}

int EditShell::Message(const char* title, const char* text, bool okOnly, const QRect* rect, const char* okText,
                       const char* cancelText)
{
  return QMessageBox(title, text, okOnly ? 1 : 0, rect, okText, cancelText) == 1 ? 1 : 0;
}

bool EditShell::AskText(const char* title, const char* prompt, std::string& text, int maxLength, const QRect* rect)
{
  return QDlgString(title, prompt, text, maxLength, 1, rect) == 1;
}

bool EditShell::AskFile(const char* title, const char* key, std::string& path)
{
  return QDlgFile(title, settings.get(), key, "", &path, nullptr);
}

std::unique_ptr<EditList> EditShell::OpenList(const char* title, std::span<const std::string> items)
{
  return std::make_unique<ModelsModeList>(*app.GetShell(), title, items);
}

void EditShell::ShowModeCheck(const char* label, bool on)
{
  widgets->ShowModeCheck(label, on);
}

bool EditShell::ModeCheck() const
{
  return widgets->ModeCheck();
}

void EditShell::PostKey(int code)
{
  QEvent event;
  event.type = QEvent::KEYPRESS;
  event.n = code;
  event.win = app.GetShell();
  QEventPush(event);
}

void EditShell::ColorByFlags(bool on)
{
  WorldRenderer& renderer = *manager->GetWorld()->GetRenderer();
  const uint32_t others = renderer.GetFlags() & ~WorldRenderer::COLOR_BY_FLAGS;
  renderer.SetFlags(on ? others | WorldRenderer::COLOR_BY_FLAGS : others);
}

void EditShell::MoveCamera()
{
  const auto held = [&](int key) { return state.keyDown[static_cast<size_t>(key)] != 0; };
  EditCameraInput input;
  input.forward = held(QKEY_UP) || held('W');
  input.backward = held(QKEY_DOWN) || held('S');
  input.anyModifier = app.GetModifiers() != 0;
  input.mouseX = static_cast<float>(app.GetMouseX());
  input.mouseY = static_cast<float>(app.GetMouseY());
  input.width = static_cast<float>(app.GetShell()->GetWidth());
  input.height = static_cast<float>(app.GetShell()->GetHeight());
  state.camera.MoveCamera(static_cast<int>(app.GetDisplay().Clock()), input);
}

bool EditShell::eventFunc(const QEvent& event)
{
  const int key = QKeyOf(event.n) & 0xFF;
  if (event.type == QEvent::KEYPRESS)
    state.keyDown[static_cast<size_t>(key)] = 1;
  else if (event.type == QEvent::KEYRELEASE)
    state.keyDown[static_cast<size_t>(key)] = 0;
  if (EditMode* mode = CurrentMode(); mode && mode->ModeEvent(event))
    return true;
  if (event.type == QEvent::WHEEL)
    state.camera.fov -= static_cast<float>(event.n) / 120;
  if (event.type == QEvent::CLICK && OnClick(event))
    return true;
  if (!state.curTrack)
    return false;
  OnMouse(event);
  if (event.type == QEvent::MOTIONNOTIFY)
    return true;
  return event.type == QEvent::KEYPRESS && OnKey(event.n);
}

bool EditShell::OnClick(const QEvent& event)
{
  if (widgets->IsObjectCheck(event.win)) {
    if (!widgets->ObjectCheck()) {
      state.objectMode = false;
      return false;
    }
    view.StartObjectMode();
    return true;
  }
  if (const int n = widgets->CommandOf(event.win); n >= 0)
    OnCommand(n);
  else if (EditMode* mode = CurrentMode(); mode && event.win && mode->ModeClick(*event.win))
    return true;
  if (const int n = widgets->ModeOf(event.win); n >= 0)
    SetMode(n);
  // The modes' operations work on a track.
  if (const int n = widgets->OperationOf(event.win); n >= 0 && state.curTrack)
    if (EditMode* mode = CurrentMode())
      mode->ModeOp(n);
  return false;
}

void EditShell::OnMouse(const QEvent& event)
{
  const int modifiers = app.GetModifiers();
  switch (event.type) {
  case QEvent::BUTTONPRESS:
  case QEvent::DOUBLECLICK:
    if (event.type == QEvent::BUTTONPRESS && event.win == app.GetShell())
      view.MousePress(event.n, event.x, event.y, modifiers);
    break;
  case QEvent::BUTTONRELEASE:
    view.MouseRelease(event.n);
    break;
  case QEvent::MOTIONNOTIFY:
    view.MouseMotion(event.xRoot, event.yRoot, modifiers);
    break;
  case QEvent::WHEEL:
    view.Wheel(event.n, modifiers);
    break;
  default:
    break;
  }
}

// A key that works in every mode.
struct EditShell::GlobalKey
{
  int code;
  void (*run)(EditShell& shell);
};

const EditShell::GlobalKey EditShell::globalKeys[] = {
    {QMOD_SHIFT | 'Q', [](EditShell& s) { s.app.Exit(0); }},
    {'I', [](EditShell& s) { s.OnImportKey(); }},
    {'G', [](EditShell& s) { s.view.GotoPickStart(); }},
    {'N', [](EditShell& s) { s.ToggleRendererFlag(WorldRenderer::PAINT_NORMALS); }},
    {'Z', [](EditShell& s) { s.ToggleRendererFlag(WorldRenderer::PAINT_WIREFRAME); }},
    {'M',
     [](EditShell& s) {
       if (s.state.curMode <= TRAFFIC_MODE)
         s.SetMode(s.state.curMode == TRAFFIC_MODE ? 0 : s.state.curMode + 1);
     }},
    {QMOD_SHIFT | 'L', [](EditShell& s) { s.ReloadTrack(); }},
    {QMOD_SHIFT | 'S', [](EditShell& s) { s.SaveTrack(); }},
    {QMOD_SHIFT | 'T', [](EditShell& s) { s.SelectTrack({}); }},
    {QKEY_KP_ADD, [](EditShell& s) { s.Zoom(0.95f, 1); }},
    {QKEY_KP_SUBTRACT, [](EditShell& s) { s.Zoom(1.05f, -1); }},
    {QKEY_KP_0 + 7, [](EditShell& s) { s.state.camera.transform.roll -= 1; }},
    {QKEY_KP_0 + 8, [](EditShell& s) { s.state.camera.transform.roll = 0; }},
    {QKEY_KP_0 + 9, [](EditShell& s) { s.state.camera.transform.roll += 1; }},
    {'O', [](EditShell& s) { s.ToggleObjectMode(); }},
    {'E',
     [](EditShell& s) {
       s.view.FocusSelection();
       s.view.OrbitApply(0, 0);
     }},
    {QMOD_CTRL | QMOD_SHIFT | 'S', [](EditShell& s) { s.OnCommand(7); }},
    {QMOD_CTRL | QMOD_SHIFT | 'T', [](EditShell& s) { s.OnCommand(10); }},
    {QMOD_CTRL | 'W', [](EditShell& s) { s.ExportModels(); }},
    {QMOD_CTRL | 'V', [](EditShell& s) { s.state.hudVisible = !s.state.hudVisible; }},
};

bool EditShell::OnKey(int code)
{
  if (QIsModifierKey(QKeyOf(code)))
    return false;
  if (EditMode* mode = CurrentMode()) {
    const bool alone = mode->HasDialog() || state.curMode >= ANIMATED_MODE;
    if (mode->ModeKey(code) && alone)
      return true;
  }
  if (code >= QKEY_F1 && code <= QKEY_F10)
    SetMode(code - QKEY_F1);
  for (const GlobalKey& key : globalKeys)
    if (key.code == code) {
      key.run(*this);
      break;
    }
  return false;
}

void EditShell::ToggleObjectMode()
{
  state.objectMode = !state.objectMode;
  widgets->SetObjectCheck(state.objectMode);
  if (state.objectMode)
    view.StartObjectMode();
}

void EditShell::Zoom(float factor, float fov)
{
  if (!state.objectMode) {
    state.camera.fov += fov;
    return;
  }
  state.orbitFactor = std::max(state.orbitFactor * factor, 0.01f);
  view.OrbitApply(0, 0);
}

void EditShell::ToggleRendererFlag(uint32_t bit)
{
  WorldRenderer& renderer = *manager->GetWorld()->GetRenderer();
  renderer.SetFlags(renderer.GetFlags() ^ bit);
}

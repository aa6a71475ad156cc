#pragma once

#include "editor/edithost.h"
#include "editor/editmode.h"
#include "editor/editstate.h"
#include "editor/editview.h"
#include "ui/qkeptframe.h"

#include <array>
#include <memory>
#include <string>

class DCameraAnimated;
class DDirector;
class DFPS;
class DRail;
class EditWidgets;
class QApp;
class QFont;
class QInfo;
class QProgressDialog;
class EditToolUi;
class QToolUi;
class QTitleBar;
class RCar;
class RManager;
struct QEvent;

// The editor between the frame's start and the process' end: set-up, callbacks, modes, track commands, shutdown.
class EditShell : public EditHost
{
public:
  static constexpr const char* VERSION = "Torvik Pavex v7.8.1 - 64 bits";
  static constexpr int MODES = 10;

  // Both outlive the shell.
  EditShell(QApp& application, std::unique_ptr<QInfo> settings);
  ~EditShell() override;
  EditShell(const EditShell&) = delete;
  EditShell& operator=(const EditShell&) = delete;

  // Tells the application what window the settings want; before it makes one.
  void Configure();
  // Once the frame has made its window. Installs the callbacks.
  void Setup();
  // Saves the settings and takes all down; the frame calls it before its own clean-up.
  void exitFunc();
  // The multi-sub cutter on a large scene in a place of its own, for who works on the cutter.
  void CutTestScene();

  void idleFunc();
  bool eventFunc(const QEvent& event); // true: handled

  void SetMode(int n);
  bool SelectTrack(std::string name); // empty: asks
  void LoadTrack();
  void ReloadTrack();
  void SaveTrack();
  void ResetTrack();
  void SetTrack(const std::string& name);

  void SetOpButtons(std::span<const char* const> labels) override;
  void HudPrint(std::string_view text) override;
  int Message(const char* title, const char* text, bool okOnly, const QRect* rect, const char* okText,
              const char* cancelText) override;
  bool AskText(const char* title, const char* prompt, std::string& text, int maxLength, const QRect* rect) override;
  bool AskFile(const char* title, const char* key, std::string& path) override;
  int64_t Clock() const override;
  void ShowFrame() override;
  void Pause(int milliseconds) override;
  void DropPresses() override;
  std::unique_ptr<EditList> OpenList(const char* title, std::span<const std::string> items) override;
  void ShowModeCheck(const char* label, bool on) override;
  bool ModeCheck() const override;
  void PostKey(int code) override;
  void ColorByFlags(bool on) override;

  EditState& State() { return state; }
  const QInfo& Settings() const { return *settings; } // until exitFunc
  // The HUD as it was last painted, a line each.
  const std::vector<std::string>& HudLines() const { return hudLines; }

private:
  struct Command;
  static const Command commands[];
  struct GlobalKey;
  static const GlobalKey globalKeys[];

  // With the settings for it, errors and warnings of loading end the run and are shown.
  void EndOnProblems();
  void InstallMessages();
  void CreateView();
  void CreateModes();
  void ReadTransform();
  void StoreSettings();

  // Painting, in editpaint.cpp.
  void PaintAll();
  void PaintPicture(); // all but the swap
  void KeepFrame();
  void PaintKept();
  void PrepareScene();
  void PaintOverlay(int flags);
  void PaintPickLine(DOverlay& overlay) const;
  void PaintAllVertices(DOverlay& overlay);
  void PaintPanels();
  void PaintDialog();
  void PaintHud();
  void BakeMiniMap();
  void PaintMiniMap();

  // Events.
  bool OnClick(const QEvent& event);
  void OnMouse(const QEvent& event);
  bool OnKey(int code);
  void ToggleObjectMode();
  void ObjectModeOn();
  void Zoom(float factor, float fov);
  void ToggleRendererFlag(uint32_t bit);
  void MoveCamera();
  EditMode* CurrentMode();

  // Commands for exported scenery, in editcommands.cpp.
  EditToolUi MakeToolUi();
  void OnCommand(int n);
  void ImportModels(QToolUi& ui, bool dropsCache);
  void OnImportKey();
  void SplitTrack(QToolUi& ui);
  void CutASE(QToolUi& ui);
  // An empty file is asked for; an empty directory is the track's own for exports. False when nothing was cut.
  bool CutASEMultiSub(QToolUi& ui, std::string file, std::string directory, bool showResult);
  void AutoAseToDof(QToolUi& ui);
  void MakeShaderTemplate(QToolUi& ui);
  void ExportModels();

  // Track commands, in edittrack.cpp.
  bool TrackExists(const std::string& name) const;
  void OpenTrack(const std::string& name);
  void ResetView();
  bool LoadProgress(QProgressDialog& dialog, int current, int total, const char* text);

  QApp& app;
  std::unique_ptr<QInfo> settings;
  EditState state;
  EditView view;
  std::unique_ptr<RManager> manager;
  std::unique_ptr<RCar> previewCar; // hangs in the manager's scene
  std::unique_ptr<QFont> font;
  std::unique_ptr<QTitleBar> titleBar;
  std::unique_ptr<EditWidgets> widgets;
  QKeptFrame kept; // below the dialogs of a tool at work
  std::unique_ptr<DCameraAnimated> viewCamera;
  std::unique_ptr<DRail> rail; // the view camera alone
  std::unique_ptr<DDirector> director;
  std::unique_ptr<DFPS> fps;
  std::array<std::unique_ptr<EditMode>, MODES> modes;
  std::vector<DVector3> vertices; // of all nodes, to be shown by one call
  int verticesNodes = -1;         // how many nodes they are of; -1: to be gathered again
  std::vector<std::string> hudLines;
  int hudY = 0;
  int64_t startTime = 0; // of the shared clock, milliseconds
  bool firstFrameLogged = false;
};

#include "session/editsession.h"

#include "foundation/qinfo.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "ui/qdialog.h"
#include "ui/qprogressdialog.h"
#include "ui/qwindowmanager.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>

namespace {

// A quad that faces up.
void WriteRoad(const std::string& path)
{
  DGeode geode("road.dof");
  geode.AddMaterial()->name = "asphalt";
  DGeob& geob = *geode.AddGeob();
  const DVector3 corners[] = {{-20, 0, -200}, {20, 0, -200}, {20, 0, 200}, {-20, 0, 200}};
  for (const DVector3& corner : corners) {
    geob.vertex.push_back(corner);
    geob.normal.push_back({0, 1, 0});
    geob.texCoord[0].push_back({corner.x / 10, corner.z / 10});
  }
  for (const uint16_t i : std::initializer_list<uint16_t>{0, 2, 1, 0, 3, 2})
    geob.index.push_back(i);
  geob.AddBurst({0, 3 * 6, 0, 3, 0});
  geob.FinalizeGeob();
  ASSERT_TRUE(geode.ExportDOF(path));
}

} // namespace

EditSession::EditSession()
{
  std::filesystem::create_directories(root.Path("bin"));
  inside = std::make_unique<InDirectory>(root.Path());
  WriteSettings("resolution\n{\n  width=1280\n  height=800\n}\nview\n{\n  width=880\n  height=640\n}\n");
}

EditSession::~EditSession()
{
  Stop();
  shell.reset();
  application.reset();
  DResetGlobals();
}

void EditSession::WriteTrack(const std::string& name)
{
  const std::string dir = "data/tracks/" + name + "/";
  root.Write(dir + "track.ini", "track\n{\n  name=Oval\n  id=oval\n}\n");
  root.Write(dir + "special.ini", "; an author's comment\nauthor\n{\n  note=kept\n}\n"
                                  "grid\n{\n  count=2\n  pos0\n  {\n    from\n    {\n      x=1.000000\n    }\n  }\n}\n"
                                  "triggerline\n{\n  count=1\n  line0\n  {\n    command=old\n  }\n}\n");
  root.Write(dir + "spline.ini", "lines\n{\n  count=4\n}\n"
                                 "line0\n{\n  cp0=-5 0 0\n  cp1=5 0 0\n}\nline1\n{\n  cp0=-5 0 50\n  cp1=5 0 50\n}\n"
                                 "line2\n{\n  cp0=-15 0 50\n  cp1=-25 0 50\n}\n"
                                 "line3\n{\n  cp0=-15 0 0\n  cp1=-25 0 0\n}\n");
  root.Write(dir + "geometry.ini", "objects\n{\n  road\n  {\n    file=road.dof\n  }\n}\n");
  WriteRoad(root.Path(dir + "road.dof"));
}

std::string EditSession::TrackFile(const std::string& track, const std::string& leaf) const
{
  return root.Path("data/tracks/" + track + "/" + leaf);
}

void EditSession::WriteSettings(const std::string& text) const
{
  root.Write("bin/pavex.ini", text);
}

void EditSession::Start()
{
  auto owned = std::make_unique<QNullDisplay>();
  display = owned.get();
  application = std::make_unique<QApp>("pavex", "Pavex", std::move(owned));
  application->SetNonStoppingExit();
  application->AddCleanupProc([this] { ended = true; });
  application->SetInfo(std::make_unique<QInfo>("torvik.ini", QInfo::NO_OPEN_WARNING));
  shell = std::make_unique<EditShell>(*application, std::make_unique<QInfo>(root.Path("bin/pavex.ini")));
  shell->Configure();
  ASSERT_TRUE(application->Create());
  for (const std::string& answer : early)
    Answer(answer);
  shell->Setup();
  started = true;
}

void EditSession::Stop()
{
  if (shell && !ended)
    application->Exit(0);
}

bool EditSession::LoadTrack(const std::string& name)
{
  const bool selected = shell->SelectTrack(name);
  Frames(1);
  return selected && State().trackReady;
}

void EditSession::Settle()
{
  application->RunPoll();
}

void EditSession::NoteDialog()
{
  const auto* dialog = dynamic_cast<const QDialog*>(application->GetWindowManager()->OpenDialog());
  const std::string text = dialog ? dialog->GetTitle() + ": " + dialog->GetText() : "(no dialog)";
  dialogs.push_back(text);
}

void EditSession::Answer(const std::string& text)
{
  if (!display) {
    early.push_back(text);
    return;
  }
  // Nobody is asked while a long operation shows how far it is, but it can be cancelled.
  const auto isAsked = [this, text] {
    const QWindow* open = application->GetWindowManager()->OpenDialog();
    return (open || started) && (text == "\x1b" || !dynamic_cast<const QProgressDialog*>(open));
  };
  display->ThenWhen(isAsked, [this, text] {
    NoteDialog();
    if (text == "\x1b") {
      display->Key(QKEY_ESC);
      return;
    }
    display->Type(text);
    display->Key(QKEY_ENTER);
  });
}

void EditSession::AnswerFile(const std::string& path)
{
  display->Then([this, path] {
    NoteDialog();
    QWindowManager* manager = application->GetWindowManager();
    if (QWindow* file = manager->FindVisible("QEdit", "")) // it has the last file otherwise, and the focus
      manager->SetKeyboardFocus(file);
    manager->GetFocus()->SetText(path);
    display->Key(QKEY_ENTER);
  });
}

void EditSession::Key(int code)
{
  display->Key(code);
  Settle();
  Frames(1);
}

void EditSession::Click(int x, int y)
{
  display->Click(x, y);
  Settle();
  Frames(1);
}

void EditSession::ClickOn(const char* className, const char* text)
{
  const QWindow* control = application->GetWindowManager()->FindVisible(className, text);
  ASSERT_NE(nullptr, control) << className << " " << text;
  display->ClickOn(*control);
  Settle();
  Frames(1);
}

void EditSession::Drag(int button, int x1, int y1, int x2, int y2)
{
  display->Move(x1, y1);
  display->ButtonDown(button);
  Settle();
  display->Move((x1 + x2) / 2, (y1 + y2) / 2);
  Settle();
  display->Move(x2, y2);
  Settle();
  display->ButtonUp(button);
  Settle();
}

void EditSession::ShiftDrag(int x1, int y1, int x2, int y2)
{
  display->KeyDown(QKEY_SHIFT_KEY);
  Drag(1, x1, y1, x2, y2);
  display->KeyUp(QKEY_SHIFT_KEY);
  Settle();
  Frames(1);
}

void EditSession::Frames(int n)
{
  for (int i = 0; i < n && !ended; ++i)
    shell->idleFunc();
}

void EditSession::LookDownOn(const DVector3& eye)
{
  State().camera.transform = {eye, 90, 0, 0};
  State().camera.fov = 50;
  Frames(1);
}

bool EditSession::HudHas(const std::string& text)
{
  Frames(1);
  for (const std::string& line : shell->HudLines())
    if (line.find(text) != std::string::npos)
      return true;
  return false;
}

bool EditSession::Sees(const char* className, const char* text) const
{
  return application->GetWindowManager()->FindVisible(className, text) != nullptr;
}

std::string EditSession::TitleBar() const
{
  for (const QWindow* w : application->GetWindowManager()->Windows())
    if (std::string_view(w->GetClassName()) == "QTitleBar" && !w->compound)
      return w->GetText();
  return {};
}

// Model properties in the whole editor: from opening a track to reading its file again.

#include "session/editsession.h"

#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "geometry/dgeode.h"
#include "runtime/rmanager.h"
#include "scene/worldgeodenode.h"
#include "scene/worldrenderer.h"
#include "scene/worldscene.h"
#include "track/rtrackvrml.h"
#include "ui/qdialog.h"
#include "ui/qlistbox.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

constexpr int MODE_KEY = QKEY_F4;

class ModelsSession : public testing::Test
{
protected:
  ModelsSession()
  {
    session.WriteTrack("oval");
    std::string text = "objects\n{\n  road\n  {\n    file=road.dof\n  }\n";
    for (const char* name : {"tree1", "tree2", "wall"}) {
      text += "  " + std::string(name) + "\n  {\n    file=" + name + ".dof\n    flags=0\n  }\n";
      // Beside the road, each in a place of its own.
      DGeode geode(name);
      EXPECT_TRUE(geode.ImportDOF(session.TrackFile("oval", "road.dof")));
      geode.ScaleVertices(0.1f, 1, 0.02f);
      geode.Translate(50, 0, offset += 20);
      EXPECT_TRUE(geode.ExportDOF(session.TrackFile("oval", std::string(name) + ".dof")));
    }
    std::ofstream(session.TrackFile("oval", "geometry.ini")) << text << "}\n";
  }
  void Start()
  {
    session.Start();
    ASSERT_TRUE(session.LoadTrack("oval"));
    session.Key(MODE_KEY);
  }
  uint32_t Flags(int i) { return (*session.State().curTrack->nodes.At(i))->flags; }
  bool Colored() const { return RMGR()->GetWorld()->GetRenderer()->GetFlags() & WorldRenderer::COLOR_BY_FLAGS; }
  bool ListIsOpen() { return session.App().GetWindowManager()->OpenDialog() != nullptr; }

  EditSession session;
  float offset = -30;
};

TEST_F(ModelsSession, FlagsOfAPatternAreSavedAndComeBack)
{
  Start();
  EXPECT_TRUE(session.HudHas("Object: 0 nodes selected (out of 4)"));
  session.LookDownOn({50, 20, -10});
  session.ShiftDrag(640, 400, 640, 400);
  ASSERT_TRUE(session.HudHas("Object: tree1.dof (2 out of 4)")) << "the first tree lies below the camera";
  session.Key('Y');
  session.Key('C');
  session.ClickOn("QButton", "Toggle flag: Receive Shadow");
  EXPECT_TRUE(session.HudHas("Flags: Sky Collide ReceiveShadow "));
  session.Answer("tree*");
  session.Answer("");
  session.ClickOn("QButton", "Copy flags to group (Shift-G)");
  EXPECT_EQ("Notice: 2 objects matched.", session.LastDialog());
  session.Answer("");
  session.Key(QMOD_SHIFT | 'S');

  session.Answer("");
  session.Key(QMOD_SHIFT | 'L');
  ASSERT_TRUE(session.State().trackReady);
  EXPECT_TRUE(session.State().SelectedNodes.empty());
  EXPECT_EQ(6u, Flags(0));
  EXPECT_EQ(259u, Flags(1));
  EXPECT_EQ(259u, Flags(2));
  EXPECT_EQ(0u, Flags(3));
}

TEST_F(ModelsSession, AShiftDragCollectsEachNodeOnce)
{
  Start();
  session.LookDownOn({50, 60, 10});
  session.ShiftDrag(640, 100, 640, 700);
  EXPECT_GE(session.State().SelectedNodes.size(), 2u);
  session.ShiftDrag(640, 400, 642, 402);
  EXPECT_EQ(1u, session.State().SelectedNodes.size());
}

TEST_F(ModelsSession, TheListIsWorkedByKeysAndThenTheViewTurns)
{
  Start();
  session.State().camera.transform = {{0, 10, 0}, 0, 0, 0};
  session.Key('H');
  ASSERT_TRUE(ListIsOpen());
  const QWindow* dialog = session.App().GetWindowManager()->OpenDialog();
  EXPECT_EQ("Select an track node", dynamic_cast<const QDialog*>(dialog)->GetTitle());
  EXPECT_EQ(640, dialog->rect.wid);
  EXPECT_EQ(720, dialog->rect.hgt);
  EXPECT_EQ(320, dialog->rect.x);
  session.Display().KeyDown('W'); // flies, were it not for the list
  session.App().RunPoll();
  session.Frames(20);
  session.Display().KeyUp('W');
  session.App().RunPoll();
  EXPECT_EQ(DVector3(0, 10, 0), session.State().camera.transform.pos);
  session.Key('T');
  session.Key(QKEY_DOWN);
  session.Key(QKEY_F1);
  EXPECT_EQ(3, session.State().curMode) << "keys are the list's";
  session.Key(QKEY_ENTER);
  EXPECT_FALSE(ListIsOpen());
  EXPECT_TRUE(session.HudHas("Object: tree2.dof (3 out of 4)"));
  EXPECT_NEAR(50, session.State().orbitPivot.x, 0.1f) << "as E does";
  EXPECT_FALSE(session.State().keyDown[QKEY_ENTER]);
}

TEST_F(ModelsSession, TheListIsWorkedByTheMouse)
{
  Start();
  session.Key('H');
  auto* list = dynamic_cast<QListBox*>(session.App().GetWindowManager()->FindVisible("QListBox", "road"));
  ASSERT_NE(nullptr, list) << "the cursor stands on the first";
  EXPECT_EQ(4, list->GetItemCount());
  const QRect place = list->RootRect();
  session.Click(place.x + 20, place.y + list->GetItemHeight() * 3 + 6);
  session.Key('R'); // the press gave the list the focus, and letters still go by the first that fits
  session.Key(QKEY_PGDN);
  session.ClickOn("QButton", "OK");
  EXPECT_TRUE(session.HudHas("Object: wall.dof (4 out of 4)"));
  for (const bool button : {true, false}) {
    session.Key('H');
    ASSERT_TRUE(ListIsOpen());
    if (button)
      session.ClickOn("QButton", "Cancel");
    else
      session.Display().CloseWindow();
    session.App().RunPoll();
    EXPECT_FALSE(ListIsOpen());
  }
  EXPECT_FALSE(session.HasEnded()) << "closing the window closed the list alone";
  EXPECT_TRUE(session.HudHas("Object: wall.dof"));
  session.Key('H');
  session.Key(QMOD_SHIFT | 'Q');
  EXPECT_FALSE(session.HasEnded());
}

TEST_F(ModelsSession, ColoursGoWithTheModeAndAreKept)
{
  Start();
  EXPECT_TRUE(session.Sees("QCheck", "Colorize flags (Collide/Surface)"));
  EXPECT_TRUE(Colored());
  session.Key('V');
  EXPECT_FALSE(Colored());
  session.ClickOn("QCheck", "Colorize flags (Collide/Surface)");
  EXPECT_TRUE(Colored());
  session.Key(QKEY_F1);
  EXPECT_FALSE(Colored());
  EXPECT_FALSE(session.Sees("QCheck", "Colorize flags (Collide/Surface)"));
  session.Key(MODE_KEY);
  EXPECT_TRUE(Colored());
  session.Key('V');
  session.Key(QKEY_F1);
  session.Key(QMOD_SHIFT | 'Q');
  EXPECT_EQ(0, QInfo("bin/pavex.ini").GetInt("settings.colorize_props", 1));
}

TEST_F(ModelsSession, LeavingTheModeStopsTheBlinkingAndKeepsTheSelection)
{
  Start();
  session.Key(QKEY_END);
  session.Frames(2);
  const WorldGeodeNode& node = *(*session.State().curTrack->nodes.At(3))->sceneNode;
  EXPECT_FALSE(node.IsVisible());
  session.Frames(60);
  EXPECT_TRUE(node.IsVisible());
  session.Frames(50);
  EXPECT_FALSE(node.IsVisible());
  session.Key(QKEY_F1);
  EXPECT_TRUE(node.IsVisible());
  session.Frames(60);
  EXPECT_TRUE(node.IsVisible());
  EXPECT_EQ(1u, session.State().SelectedNodes.size());
}

TEST_F(ModelsSession, TheReportIsWrittenAndOpened)
{
  Start();
  std::string opened;
  QFileHooks().openDocument = [&](const std::string& what, const std::string&) {
    opened = what;
    return true;
  };
  session.Key(QKEY_HOME);
  session.Key(QMOD_SHIFT | 'I');
  QFileHooks().openDocument = nullptr;
  EXPECT_EQ("report.txt", opened);
  EXPECT_NE(std::string::npos, FileText("report.txt").find("Material 0 ('asphalt')"));
}

} // namespace

#include "foundation/qappcore.h"
#include "foundation/qinfo.h"
#include "foundation/qsystemnode.h"
#include "runtime/rcar.h"
#include "runtime/rmanager.h"
#include "runtime/rscene.h"
#include "runtime/rtrackbase.h"
#include "scene/worldrenderer.h"
#include "scene/worldscene.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gtest/gtest.h>

namespace {

// An application whose settings are a text.
class SettingsApp
{
public:
  explicit SettingsApp(const char* text) : app("Pavex")
  {
    auto info = std::make_unique<QInfo>("torvik.ini", QInfo::NO_READ);
    info->ReadFromText(text);
    app.SetInfo(std::move(info));
  }

private:
  QAppCore app;
};

// Hangs a node in the scene, as a track does.
class OneNodeTrack : public RTrackBase
{
public:
  explicit OneNodeTrack(WorldScene* scene) : node(scene, "scenery") { scene->AddNode(&node); }
  const std::string& Directory() const override { return directory; }
  void GetSurfaceInfo(const DVector3&, const DVector3&, RSurfaceInfo&) override {}
  DVector3 FirstGridPlace() const override { return DVector3(0.0f); }

private:
  std::string directory = "data/tracks/one";
  WorldGroupNode node;
};

} // namespace

TEST(Manager, MendsSettingsThatMakeNoSense)
{
  const struct
  {
    const char* text;
    const char* report; // null: none
    int width, minimapHeight, anisotropy;
    float aspect;
  } cases[] = {
      {"", nullptr, 1, 0, 1, 1.0f},
      {"resolution\n{\nwidth=0\naspect=0.5\n}\n", nullptr, 1, 0, 1, 0.5f},
      {"resolution\n{\nwidth=1280\naspect=0.000001\n}\n", "(pixel aspect ratio) is too small; using 1", 1280, 0, 1,
       1.0f},
      {"minimap\n{\nwid=128\nhgt=100\n}\n", "Minimap width & height should be the same. Forcing anyway.", 1, 128, 1,
       1.0f},
      {"filter\n{\nmax_anisotropy=0\n}\n", "filter.max_anisotropy must be >=1", 1, 0, 1, 1.0f},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    ReportCapture reports;
    const SettingsApp app(c.text);
    const RManager manager(RManager::EDITOR);
    EXPECT_EQ(c.width, manager.resolution.width);
    EXPECT_EQ(c.minimapHeight, manager.minimap[3]);
    EXPECT_EQ(c.anisotropy, manager.filter.maxAnisotropy);
    EXPECT_EQ(c.aspect, manager.resolution.aspect);
    EXPECT_EQ(c.report ? 1 : 0, reports.Problems()) << reports.All();
    EXPECT_TRUE(!c.report || reports.Contains(c.report));
  }
}

TEST(Manager, IsTheOnlyOne)
{
  ReportCapture reports;
  EXPECT_EQ(nullptr, RMGR());
  {
    RManager first(RManager::EDITOR);
    {
      RManager second(RManager::EDITOR);
      EXPECT_TRUE(reports.Contains("RManager created more than once"));
      second.LoadConfig();
      EXPECT_EQ(nullptr, second.GetWorld());
    }
    EXPECT_EQ(&first, RMGR());
    EXPECT_EQ(1, first.GetMonitors());
    EXPECT_TRUE(reports.Contains("No scene graph or renderer yet"));
  }
  EXPECT_EQ(nullptr, RMGR());
}

TEST(Manager, BuildsItsServicesFromTheSettings)
{
  const TempDir dir;
  const InDirectory inside(dir.Path());
  dir.Write("data/locale/own.txt", "misc\n{\nok=Fein\n}\n");
  dir.Write("data/locale/torvik_english.txt", "misc\n{\nok=OK\ncancel=Cancel\n}\nconsole\n{\nactivated=Hello\n}\n");
  const SettingsApp app("ini\n{\nlocale=own.txt\n}\nrenderer\n{\ncamera_at_origin=1\nstencil_shadows=1\n}\n"
                        "gfx\n{\nshow_timelines=1\n}\nenvmap\n{\nlive_track\n{\nbits=12\n}\n}\n"
                        "shadow\n{\nproject_shadows=1\n}\n");
  ReportCapture reports;
  RManager manager(RManager::EDITOR);
  manager.LoadConfig();
  EXPECT_EQ("Fein", manager.FindLanguageString("misc.ok"));
  EXPECT_EQ("Cancel", manager.FindLanguageString("misc.cancel")); // the English one
  EXPECT_EQ("Hello", manager.console.firstLine);
  EXPECT_EQ(RManager::SHOW_TIMELINES, manager.show);
  ASSERT_NE(nullptr, manager.GetWorld());
  const WorldRenderer& renderer = *manager.GetWorld()->GetRenderer();
  EXPECT_EQ("data/renderer/shaders", renderer.GetShaderPath());
  EXPECT_FALSE(renderer.GetFlags() & WorldRenderer::CAMERA_AT_ORIGIN);
  EXPECT_TRUE(reports.Contains("Renderer has camera_at_origin=1, turning off silently for Pavex"));
  EXPECT_TRUE(reports.Contains("Stencil shadow take preference, project_shadows is turned OFF"));
  EXPECT_TRUE(reports.Contains("envmap.live_track.bits=12; unsupported (only 8 or 16 allowed)"));
}

TEST(Manager, DeletesTheTrackBeforeTheSceneItHangsIn)
{
  ReportCapture reports;
  {
    RManager manager(RManager::EDITOR);
    manager.LoadConfig();
    manager.SetTrack(std::make_unique<OneNodeTrack>(manager.GetWorld()));
    EXPECT_EQ(1, manager.GetWorld()->CountNodes());
    manager.SetTrack(std::make_unique<OneNodeTrack>(manager.GetWorld()));
    EXPECT_EQ(1, manager.GetWorld()->CountNodes());
    const RCar car("lambomurcielago", 0);
    manager.SetTrack(nullptr);
    EXPECT_EQ(1, manager.GetWorld()->CountNodes()); // the car's group
    manager.SetTrack(std::make_unique<OneNodeTrack>(manager.GetWorld()));
  }
  EXPECT_EQ(reports.Count("fadeout.tga"), reports.Problems()) << reports.All(); // the picture isn't here
}

TEST(Manager, LooksForShadersInTheGivenDirectoryFirst)
{
  RManager manager(RManager::EDITOR);
  manager.SetShaderPaths("data/tracks/lakeside");
  ASSERT_EQ(2, manager.GetShaderPaths().GetCount());
  EXPECT_STREQ("data/tracks/lakeside", manager.GetShaderPaths().GetPath(0));
  EXPECT_STREQ("data/renderer/shaders", manager.GetShaderPaths().GetPath(1));
  manager.ResetShaderPaths();
  EXPECT_EQ(0, manager.GetShaderPaths().GetCount());
}

TEST(PreviewCar, ShowsItsBodyAndLeavesNothingBehind)
{
  ReportCapture reports;
  const SettingsApp app("");
  RManager manager(RManager::EDITOR);
  manager.LoadConfig();
  QSystemNode& system = QAppCore::Get()->GetSystem();
  {
    RCar car("lambomurcielago", 0);
    ASSERT_NE(nullptr, system.FindChild("car0"));
    const QSystemNode* telemetry = system.FindChild("car0")->FindChild("telemetry");
    ASSERT_NE(nullptr, telemetry);
    car.GetBody()->position = {1, 2, 3};
    ASSERT_NE(nullptr, telemetry->Find("pos_z"));
    EXPECT_EQ(3, *telemetry->Find("pos_z"));
    ASSERT_NE(nullptr, telemetry->Find("quat_w"));
    EXPECT_EQ(1, *telemetry->Find("quat_w"));
    ASSERT_NE(nullptr, car.GetDirector().GetRail(0));
    EXPECT_EQ(10, car.GetDirector().GetRail(0)->GetNoofCameras());
    EXPECT_NE(nullptr, manager.GetWorld()->FindNode("carGroup"));
    manager.GetScene()->AddCar(&car);
    EXPECT_EQ(1.0f, car.GetRadius());
    const RCar second("lambomurcielago", 0);
    EXPECT_EQ(1, second.GetIndex());
    EXPECT_NE(nullptr, system.FindChild("car1"));
  }
  EXPECT_EQ(0, manager.GetScene()->GetNoofCars());
  EXPECT_EQ(nullptr, system.FindChild("car0"));
  EXPECT_EQ(0, manager.GetWorld()->CountNodes());
  EXPECT_EQ(1, reports.Problems() - reports.Count("fadeout.tga")) << reports.All(); // it has no model
}

TEST(PreviewCar, NeedsNoFilesAndFollowsAReference)
{
  const TempDir dir;
  const InDirectory inside(dir.Path());
  dir.Write("data/cars/skinned/reference.ini", "reference\n{\ncar=base\nskin=4\n}\n");
  ReportCapture reports;
  const RCar plain("lambomurcielago", 3);
  EXPECT_EQ("data/cars/lambomurcielago", plain.GetDir());
  EXPECT_EQ(0x4000003u, plain.GetFlags());
  EXPECT_EQ(0, plain.GetSkin());
  const RCar skinned("skinned", 0);
  EXPECT_EQ("skinned", skinned.GetName());
  EXPECT_EQ("data/cars/base", skinned.GetDir());
  EXPECT_EQ(4, skinned.GetSkin());
  EXPECT_TRUE(reports.Contains("RCar ctor (lambomurcielago)"));
  EXPECT_TRUE(reports.Contains("Reference.ini found; skinned car in 'data/cars/base' (skin=4)"));
  EXPECT_EQ(0, reports.Problems()) << reports.All();
}

// The command buttons that make a track of exported scenery.

#include "session/editsession.h"

#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "geometry/dgeode.h"
#include "support/reportcapture.h"
#include "track/rtrackvrml.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

// Two triangles, one of each submaterial.
constexpr const char* SCENE = R"(*3DSMAX_ASCIIEXPORT 200
*MATERIAL_LIST {
	*MATERIAL_COUNT 1
	*MATERIAL 0 {
		*MATERIAL_NAME "multi"
		*NUMSUBMTLS 2
		*SUBMATERIAL 0 {
			*MATERIAL_NAME "Grass"
		}
		*SUBMATERIAL 1 {
			*MATERIAL_NAME "Sand"
		}
	}
}
*GEOMOBJECT {
	*NODE_NAME "Field"
	*MESH {
		*MESH_NUMVERTEX 4
		*MESH_NUMFACES 2
		*MESH_VERTEX_LIST {
			*MESH_VERTEX 0	0 0 1
			*MESH_VERTEX 1	10 0 1
			*MESH_VERTEX 2	0 10 1
			*MESH_VERTEX 3	10 10 1
		}
		*MESH_FACE_LIST {
			*MESH_FACE 0: A: 0 B: 1 C: 2 AB: 1 BC: 1 CA: 1 *MESH_SMOOTHING 1 *MESH_MTLID 0
			*MESH_FACE 1: A: 1 B: 3 C: 2 AB: 1 BC: 1 CA: 1 *MESH_SMOOTHING 1 *MESH_MTLID 1
		}
	}
	*MATERIAL_REF 0
}
)";

class CommandsTest : public testing::Test
{
protected:
  void SetUp() override
  {
    session.WriteTrack("oval");
    session.Start();
    ASSERT_TRUE(session.LoadTrack("oval"));
    Write("scene.ase", SCENE);
  }
  std::string File(const char* leaf) const { return session.TrackFile("oval", leaf); }
  void Write(const char* leaf, const char* text)
  {
    std::filesystem::create_directories(std::filesystem::path(File(leaf)).parent_path());
    std::ofstream(File(leaf)) << text;
  }
  bool Exists(const char* leaf) const { return std::filesystem::exists(File(leaf)); }
  int Faces(const char* leaf) const
  {
    DGeode geode;
    int faces = 0;
    if (geode.ImportDOF(File(leaf)))
      for (const auto& geob : geode.geob)
        faces += geob->FaceCount();
    return faces;
  }
  int NodeCount() { return session.State().curTrack->nodes.Count(); }

  EditSession session;
};

TEST_F(CommandsTest, CutsASceneApart)
{
  session.AnswerFile(File("scene.ase"));
  session.Answer(""); // done
  session.ClickOn("QButton", "Cut ASE apart");
  EXPECT_NE(std::string::npos, session.LastDialog().find("Split ASE files are in ")) << session.LastDialog();
  EXPECT_TRUE(std::filesystem::exists("output/Field.ase"));
  session.Answer("\x1b");
  session.ClickOn("QButton", "Cut ASE apart");
  EXPECT_NE(std::string::npos, session.LastDialog().find("Cut ASE apart"));
}

TEST_F(CommandsTest, ConvertsASubmaterialAFile)
{
  session.AnswerFile(File("scene.ase"));
  session.Answer("");
  session.ClickOn("QButton", "Cut Multisub ASE");
  EXPECT_NE(std::string::npos, session.LastDialog().find("now try 'Convert ASE batch'")) << session.LastDialog();
  EXPECT_FALSE(std::filesystem::exists("TEMP_ase_cut_multisub.txt")) << "nothing was wrong";
  EXPECT_TRUE(Exists("ase/grass_0_field.ase"));
  EXPECT_TRUE(Exists("ase/sand_1_field.ase"));
  for (const char* answer : {"", "\x1b", ""}) // sure, not optimised, done
    session.Answer(answer);
  session.ClickOn("QButton", "ASE->DOF batch");
  EXPECT_NE(std::string::npos, session.LastDialog().find("Done with conversion")) << session.LastDialog();
  EXPECT_EQ(1, Faces("grass_0_field.dof"));
  EXPECT_EQ(1, Faces("sand_1_field.dof"));
}

TEST_F(CommandsTest, WhatIsNoSceneIsReportedAndShown)
{
  constexpr const char* LOG = "TEMP_ase_cut_multisub.txt";
  Write("notes.ase", "no scene\n");
  std::vector<std::string> opened;
  QFileHooks().openDocument = [&](const std::string& what, const std::string&) {
    opened.push_back(what);
    return true;
  };
  {
    ReportCapture reports;
    session.AnswerFile(File("notes.ase"));
    session.ClickOn("QButton", "Cut ASE apart");
    EXPECT_EQ(1, reports.Count("Failed to cut ASE apart"));
  }
  EXPECT_TRUE(opened.empty());
  session.AnswerFile(File("notes.ase"));
  session.ClickOn("QButton", "Cut Multisub ASE");
  EXPECT_EQ(std::vector<std::string>{LOG}, opened);
  EXPECT_NE(std::string::npos, FileText(LOG).find("Failed to cut ASE apart"));
  EXPECT_EQ(2u, session.Dialogs().size()) << "nobody is told that it worked";

  session.Answer("");
  session.AnswerFile(File("notes.ase"));
  session.Answer(""); // optimised
  session.Answer(""); // it failed
  session.ClickOn("QButton", "Auto - Ase To Dof");
  EXPECT_EQ("ERROR: Automatic Ase to Dof failed.", session.LastDialog());
  ASSERT_EQ(6u, session.Dialogs().size());
  EXPECT_EQ("Optimize resulting DOF files?: Conversion is faster without optimizations but draws slower.",
            session.Dialogs()[4]);
  QFileHooks().openDocument = nullptr;
}

TEST_F(CommandsTest, TheTestSceneIsCutInItsOwnPlace)
{
  const std::string place = "data/tracks/zandy_msub/";
  std::filesystem::create_directories(place + "ase_big");
  std::filesystem::create_directories(place + "ase");
  std::filesystem::copy(File("scene.ase"), place + "ase_big/track03.ase");
  session.Answer("");
  session.Shell().CutTestScene();
  EXPECT_NE(std::string::npos, session.LastDialog().find("now try 'Convert ASE batch'")) << session.LastDialog();
  EXPECT_TRUE(std::filesystem::exists(place + "ase/sand_1_field.ase"));
}

TEST_F(CommandsTest, GoesAllTheWayByItself)
{
  session.Answer("");
  session.AnswerFile(File("scene.ase"));
  session.Answer("");
  session.Answer("");
  session.ClickOn("QButton", "Auto - Ase To Dof");
  EXPECT_NE(std::string::npos, session.LastDialog().find("Automatic Ase to Dof finished")) << session.LastDialog();
  EXPECT_EQ(1, Faces("sand_1_field.dof"));
  EXPECT_FALSE(Exists("temp_split_as")) << "what lay in between is gone";
}

TEST_F(CommandsTest, ImportsWhatFitsAPattern)
{
  std::filesystem::copy(File("road.dof"), File("Tree.v2.dof"));
  Write("cache/trackcollision.bin", "of the models before");
  session.Answer("Tree*");
  session.ClickOn("QButton", "(I)mport DOF models");
  ASSERT_EQ(2, NodeCount());
  const RTrackNode& node = **session.State().curTrack->nodes.At(1);
  EXPECT_EQ("tree_v2", node.name);
  EXPECT_EQ("Tree.v2.dof", node.file);
  EXPECT_FALSE(Exists("cache/trackcollision.bin"));
  Write("cache/trackcollision.bin", "kept");
  session.Answer("nothing*");
  session.Key('I');
  EXPECT_TRUE(Exists("cache/trackcollision.bin")) << "the key leaves it alone";
  session.Answer("\x1b");
  session.ClickOn("QButton", "(I)mport DOF models");
  EXPECT_EQ(2, NodeCount());
  EXPECT_TRUE(Exists("cache/trackcollision.bin")) << "and so does who cancels";
}

TEST_F(CommandsTest, WorksOverAllModels)
{
  std::filesystem::copy(File("road.dof"), File("Upper.DOF"));
  const int faces = Faces("road.dof");
  session.Answer("\x1b");
  session.ClickOn("QButton", "Add lighting");
  EXPECT_TRUE(Exists("Upper.DOF")) << "nobody was sure";
  session.Answer("");
  session.ClickOn("QButton", "Add lighting");
  EXPECT_TRUE(Exists("upper.dof"));
  EXPECT_FALSE(Exists("Upper.DOF"));
  session.Answer("");
  session.ClickOn("QButton", "Optimize DOFs");
  EXPECT_EQ(faces, Faces("road.dof"));
  DGeode geode;
  ASSERT_TRUE(geode.ImportDOF(File("upper.dof")));
  EXPECT_EQ(faces, geode.geob[0]->FaceCount());
  for (const auto& m : geode.material)
    EXPECT_FLOAT_EQ(0.8f, m->emission.r);
}

TEST_F(CommandsTest, WritesAndReadsVrml)
{
  session.Answer("");
  session.Key(QMOD_CTRL | 'W');
  ASSERT_TRUE(Exists("wrl/objects_group_0.wrl"));
  std::filesystem::create_directories(File("SCGT/wrl"));
  std::filesystem::copy(File("wrl/objects_group_0.wrl"), File("SCGT/wrl/back.wrl"));
  session.Answer("");
  session.ClickOn("QButton", "Convert SCGT wrl's");
  EXPECT_EQ(Faces("road.dof"), Faces("back.dof"));
}

TEST_F(CommandsTest, SplitsTheTrackAndMakesATemplate)
{
  std::filesystem::create_directories("data/tracks/oval_split");
  session.Answer("100");
  session.Answer("");
  session.Key(QMOD_CTRL | QMOD_SHIFT | 'S');
  EXPECT_NE(std::string::npos, session.LastDialog().find("check <trackname>_split/*.dof")) << session.LastDialog();
  EXPECT_TRUE(std::filesystem::exists("data/tracks/oval_split/geometry.ini"));
  session.Answer("");
  session.ClickOn("QButton", "Make track_template.shd");
  EXPECT_NE(std::string::npos, session.LastDialog().find("Shader templates written in data/tracks/oval/"));
  EXPECT_TRUE(Exists("track_template.shd"));
}

} // namespace

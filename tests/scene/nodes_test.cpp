#include "foundation/qinfo.h"
#include "geometry/dgeode.h"
#include "scene/scenery.h"
#include "scene/worldnodes.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

TEST(Tree, LinksNewNodesAtTheHead)
{
  WorldScene scene;
  EXPECT_EQ(nullptr, scene.FindNode("a"));
  WorldGroupNode a(&scene, "a"), b(&scene, "b"), below(&scene, "below");
  scene.AddNode(&a);
  scene.AddNode(&b);
  scene.AddNode(&below, &a);
  EXPECT_EQ(&b, scene.GetRoot()->GetChild());
  EXPECT_EQ(&a, b.GetNext());
  EXPECT_EQ(&b, a.GetPrev());
  EXPECT_EQ(&below, scene.FindNode("below"));
  EXPECT_EQ(nullptr, scene.FindNode("Below"));
  EXPECT_EQ(3, scene.CountNodes());
  scene.AddNode(&a, &below); // below itself: refused
  EXPECT_EQ(3, scene.CountNodes());
  a.flags = b.flags = below.flags = 7;
  WorldScene::ClearFlagsTree(&a, 2);
  EXPECT_EQ(5u, a.flags);
  EXPECT_EQ(5u, below.flags);
  EXPECT_EQ(7u, b.flags);
}

TEST(Tree, LosesNodesInAnyOrder)
{
  ReportCapture reports;
  WorldScene scene;
  auto parent = std::make_unique<WorldGroupNode>(&scene, "parent");
  auto child = std::make_unique<WorldGroupNode>(&scene, "child");
  auto sibling = std::make_unique<WorldGroupNode>(&scene, "sibling");
  scene.AddNode(sibling.get());
  scene.AddNode(parent.get());
  scene.AddNode(child.get(), parent.get());
  parent.reset();
  EXPECT_EQ(1, scene.CountNodes());
  EXPECT_FALSE(child->IsInTree());
  sibling.reset();
  EXPECT_EQ(0, scene.CountNodes());
  child.reset();
  EXPECT_EQ(0, reports.Problems());
}

TEST(Tree, TellsOfNodesThatOutliveIt)
{
  ReportCapture reports;
  auto scene = std::make_unique<WorldScene>();
  auto node = std::make_unique<WorldGroupNode>(scene.get(), "left");
  scene->AddNode(node.get());
  scene.reset();
  EXPECT_TRUE(reports.Contains("WorldScene:DestroyTree(); nodes still present in the tree!"));
  EXPECT_TRUE(reports.Contains("- left (group) (visible 1)"));
  node.reset();
  EXPECT_TRUE(reports.Contains("scene graph was already deleted - delete node from the leaves up!"));
}

TEST(Tree, ReportsMisuse)
{
  ReportCapture reports;
  WorldScene scene;
  const WorldGroupNode unnamed(&scene, nullptr);
  EXPECT_EQ("group", unnamed.GetName().substr(0, 5));
  WorldGroupNode node(&scene, "n");
  EXPECT_TRUE(node.SetNoofProperties(1));
  EXPECT_FALSE(node.SetNoofProperties(1));
  EXPECT_FALSE(node.DefineProperty(1, "a", "b"));
  EXPECT_TRUE(node.DefineProperty(0, "a", "b"));
  EXPECT_EQ("b", *node.FindProperty("a"));
  WorldLODNode lod(&scene, "lod");
  EXPECT_EQ(0.0f, lod.GetLODDistance(10));
  WorldVarNode var(&scene, "var");
  EXPECT_FALSE(var.SetParam("speed"));
  for (const char* text :
       {"WorldNode ctor with _name=0", "WorldNode:SetNoofProperties() already set before",
        "WorldNode:DefineProperty(); n (1) out of range 0..0", "WorldVarNode: param 'speed' not found in scene"})
    EXPECT_EQ(1, reports.Count(text)) << text;
}

TEST(SceneVariables, KeepTheirType)
{
  ReportCapture reports;
  WorldScene scene;
  const int speed = scene.AddVar("speed", WorldScene::VAR_FLOAT);
  const int gear = scene.AddVar("gear", WorldScene::VAR_INT);
  scene.SetVarFloat(speed, 2.5f);
  scene.SetVarInt(gear, 3);
  EXPECT_EQ(2.5f, scene.GetVarFloat(scene.FindVar("speed")));
  EXPECT_EQ(3, scene.GetVarInt(scene.FindVar("gear")));
  EXPECT_EQ(-1, scene.FindVar("rpm"));
  scene.GetVarInt(speed);
  scene.GetVarFloat(gear);
  scene.SetVarFloat(9, 1);
  for (int i = 0; i < 9; ++i)
    scene.AddVar("more", WorldScene::VAR_INT);
  for (const char* text :
       {"WorldScene:GetVarInt: var 'speed' is not an int", "WorldScene:GetVarFloat: var 'gear' is not an float",
        "WorldScene:SetVarInt(index 9) out of range (2 vars defined)", "WorldScene:AddVar(more); out of var space"})
    EXPECT_EQ(1, reports.Count(text)) << text;
}

TEST(GeodeNode, OfAMissingFileIsACubeOrNothing)
{
  ReportCapture reports;
  SmallScene small;
  WorldGeodeNode node(&small.scene, "gone");
  EXPECT_FALSE(node.Load("/nowhere/gone.dof", nullptr, false));
  EXPECT_TRUE(node.Load("/nowhere/gone.dof", nullptr, true));
  EXPECT_EQ(2, reports.Count("WorldGeodeNode:Load(/nowhere/gone.dof) can't import DOF"));
  ASSERT_NE(nullptr, node.GetGeode());
  EXPECT_EQ(12, node.GetGeode()->GetGeob(0)->FaceCount());
  EXPECT_EQ(DVector3(0.5f), node.GetGeode()->GetBoundingBox().max);
  small.scene.AddNode(&node);
  EXPECT_NE(nullptr, small.scene.FindNode("/nowhere/gone.dof/geob0"));
  small.camera.Go({0, 0, 5}, DVector3(0.0f), 0, 0, 0);
  small.Frame();
  EXPECT_THAT(small.Painted(), ElementsAre("mystub.dof"));
}

TEST(GeodeNode, ShowsTheLevelForTheDistance)
{
  const TempDir dir;
  for (const char* name : {"/tree.dof", "/tree_lod1.dof"})
    ASSERT_TRUE(BoxGeode({0, 0, 0})->ExportDOF(dir.Path() + name));
  const std::string file = dir.Path() + "/tree.dof";
  SmallScene small;
  ReportCapture reports;
  WorldGeodeNode node(&small.scene, "tree");
  small.scene.AddNode(&node);
  const float distances[10] = {100, 300, 500};
  ASSERT_TRUE(node.Load(file, distances, false));
  EXPECT_TRUE(reports.Contains("No LOD level 2 model found for '" + file +
                               "', even though an LOD distance of 500.0 was specified. "
                               "This may cause invisible models"));
  ASSERT_EQ(2, node.GeodeCount());
  EXPECT_EQ(300.0f, node.GetLOD()->GetLODDistance(1));
  const struct
  {
    float distance;
    int level;
  } cases[] = {{10, 0}, {99, 0}, {101, 1}, {299, 1}, {301, -1}, {600, -1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.distance);
    small.camera.Go({0, 0, c.distance}, DVector3(0.0f), 0, 0, 0);
    small.Frame();
    const auto blocks = small.scene.GetRenderBlocks();
    ASSERT_EQ(c.level < 0 ? 0u : 1u, blocks.size());
    EXPECT_EQ(node.GetGeode(c.level), blocks.empty() ? nullptr : blocks[0].geob->geode);
  }
  ASSERT_TRUE(node.Load(file, nullptr, false)); // levels only when asked for
  EXPECT_EQ(1, node.GeodeCount());
  EXPECT_EQ(nullptr, node.GetLOD());
}

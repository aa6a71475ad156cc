#include "foundation/qinfo.h"
#include "foundation/qsystemnode.h"
#include "geometry/dgeode.h"
#include "scene/scenery.h"
#include "scene/worldeffectnodes.h"
#include "scene/worldnodes.h"
#include "scene/worldrenderer.h"
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

TEST(Tree, FindsTheNewestOfAName)
{
  WorldScene scene, other;
  WorldGroupNode first(&scene, "n"), detached(&scene, "detached");
  auto second = std::make_unique<WorldGroupNode>(&scene, "n");
  auto third = std::make_unique<WorldGroupNode>(&scene, "n");
  for (WorldNode* node : {static_cast<WorldNode*>(&first), static_cast<WorldNode*>(second.get())})
    scene.AddNode(node);
  scene.AddNode(third.get(), &detached);
  EXPECT_EQ(second.get(), scene.FindNode("n")); // the third hangs outside the tree
  scene.AddNode(&detached, second.get());
  EXPECT_EQ(third.get(), scene.FindNode("n"));
  second.reset(); // from the middle of the chain, and with it the branch to the third
  EXPECT_EQ(&first, scene.FindNode("n"));
  scene.AddNode(&detached);
  third.reset();
  EXPECT_EQ(&first, scene.FindNode("n"));
  scene.AddNode(&first, &detached);
  other.AddNode(&detached); // takes what hangs below it along
  EXPECT_EQ(nullptr, scene.FindNode("n"));
  EXPECT_EQ(&first, other.FindNode("n"));
  first.Unlink();
  EXPECT_EQ(nullptr, other.FindNode("n"));
}

TEST(Tree, LeavesBranchesOutsideItAlive)
{
  auto scene = std::make_unique<WorldScene>();
  WorldGroupNode top(scene.get(), "top"), below(scene.get(), "below");
  scene->AddNode(&below, &top);
  scene.reset();
  below.Unlink();
  EXPECT_EQ(nullptr, top.GetChild());
  WorldScene next;
  next.AddNode(&below);
  EXPECT_EQ(&below, next.FindNode("below"));
}

TEST(Tree, CallsBackSoManyNodesAfterAFrame)
{
  ReportCapture reports;
  WorldScene scene;
  std::vector<std::unique_ptr<WorldGroupNode>> nodes;
  WorldNode* parent = nullptr;
  for (int i = 0; i < 501; ++i) { // each below the one before
    nodes.push_back(std::make_unique<WorldGroupNode>(&scene, "post"));
    nodes.back()->flags |= WorldNode::POST_FRAME;
    scene.AddNode(nodes.back().get(), parent);
    parent = nodes.back().get();
  }
  const auto entries = scene.FindPostFrameNodes(); // the last one has no children: no way back from it
  ASSERT_EQ(1000u, entries.size());
  EXPECT_EQ(nodes[500].get(), entries[500].node);
  EXPECT_FALSE(entries[500].leave);
  EXPECT_EQ(nodes[499].get(), entries[501].node);
  EXPECT_TRUE(entries[501].leave);
  EXPECT_TRUE(reports.Contains("WorldScene:FindPostFrameNodes(); too many nodes found, max=1000 ('leave')\n"));
  std::vector<std::unique_ptr<WorldGroupNode>> flat;
  for (int i = 0; i < 1001; ++i) {
    flat.push_back(std::make_unique<WorldGroupNode>(&scene, "flat"));
    flat.back()->flags |= WorldNode::POST_FRAME;
    scene.AddNode(flat.back().get());
  }
  EXPECT_EQ(1000u, scene.FindPostFrameNodes().size());
  EXPECT_TRUE(reports.Contains("WorldScene:FindPostFrameNodes(); too many nodes found, max=1000\n"));
  EXPECT_FALSE(scene.FindPostFrameNodes().back().leave);
}

TEST(Tree, PrintsItsDepth)
{
  ReportCapture reports;
  WorldScene scene;
  WorldGroupNode top(&scene, "top");
  WorldRainNode rain(&scene, "shower");
  scene.AddNode(&top);
  scene.AddNode(&rain, &top);
  rain.SetVisible(false);
  scene.DbgPrint("now");
  std::string text;
  for (const auto& entry : reports.Entries())
    text += entry.text;
  EXPECT_EQ("WorldScene (now)\n-------------------------\n- top (group) (visible 1)\n"
            "| - shower (rain) (visible 0)\n",
            text);
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

TEST(Scene, ShowsItselfOnce)
{
  ReportCapture reports;
  QSystemNode root("app");
  WorldScene scene;
  EXPECT_TRUE(scene.ExposeSystem(root));
  EXPECT_EQ(scene.GetSystem(), root.FindChild("scenegraph"));
  EXPECT_FALSE(scene.ExposeSystem(root));
  EXPECT_TRUE(reports.Contains("ExposeSystem duplicate call"));
  const QSystemNode* shown = scene.GetSystem()->FindChild("renderer");
  ASSERT_NE(nullptr, shown);
  EXPECT_EQ(16, shown->GetNoofValues());
  *shown->Find("eye_distance") = 0.07f;
  EXPECT_EQ(0.07f, scene.GetRenderer()->eyeDistance);
  EXPECT_EQ(7, *shown->FindInt("concurrent_lights"));
  EXPECT_EQ(&scene.GetRenderer()->genericSignal[9], shown->Find("generic_signal9"));
  EXPECT_EQ(nullptr, scene.GetSystem()->Find("eye"));
}

TEST(Scene, HoldsSoManyLightsOfAFrame)
{
  ReportCapture reports;
  SmallScene small;
  WorldLightNode light(&small.scene, "light"), hidden(&small.scene, "hidden");
  small.scene.AddNode(&light);
  small.scene.AddNode(&hidden);
  hidden.SetVisible(false);
  small.Frame();
  small.Frame(); // each frame starts anew
  ASSERT_EQ(1u, small.scene.GetRenderLights().size());
  EXPECT_EQ(&light, small.scene.GetRenderLights()[0].node);
  for (int i = 1; i < 500; ++i)
    small.scene.ReserveRenderLight();
  EXPECT_EQ(0, reports.Count("out of render lights"));
  EXPECT_EQ(&small.scene.GetRenderLights()[499], small.scene.ReserveRenderLight());
  EXPECT_TRUE(reports.Contains("WorldScene:ReserveRenderLight(); out of render lights (max=500)"));
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

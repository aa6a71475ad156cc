#include "editor/editview.h"

#include "editor/editcamera.h"
#include "editor/editstate.h"
#include "geometry/dgeode.h"
#include "scene/worldgeodenode.h"
#include "scene/worldnodes.h"
#include "support/reportcapture.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <glm/gtc/matrix_transform.hpp>
#include <gtest/gtest.h>

namespace {

TEST(EditCamera, SpeedsUpCoastsAndStops)
{
  EditCamera camera;
  EditCameraInput input;
  input.width = 100, input.height = 100, input.mouseX = 50, input.mouseY = 50;
  input.forward = true;
  camera.MoveCamera(0, input);
  camera.MoveCamera(1000, input); // counts as 100 ms
  EXPECT_TRUE(camera.IsMoving());
  EXPECT_NEAR(-100 * 0.01f, camera.transform.pos.z, 1e-4) << "yaw 0 looks along -z";
  for (int t = 1100; t < 2000; t += 100)
    camera.MoveCamera(t, input);
  const float z = camera.transform.pos.z;
  camera.MoveCamera(2100, input);
  EXPECT_NEAR(-3.0f, camera.transform.pos.z - z, 1e-4) << "0.03 a millisecond is the most";
  input.forward = false;
  for (int t = 2200; t < 3000; t += 100)
    camera.MoveCamera(t, input);
  EXPECT_FALSE(camera.IsMoving());
}

TEST(EditCamera, ModifiersStopTheKeysAndThePointerSteersOnlyWhileMoving)
{
  EditCamera camera;
  EditCameraInput input;
  input.width = 100, input.height = 100, input.mouseX = 100, input.mouseY = 50;
  input.forward = input.anyModifier = true;
  camera.MoveCamera(100, input);
  EXPECT_FALSE(camera.IsMoving());
  EXPECT_EQ(0, camera.transform.yaw);
  input.anyModifier = false;
  camera.MoveCamera(200, input);
  EXPECT_NEAR(10, camera.transform.yaw, 1e-4); // 100 ms at the right edge
  EXPECT_NEAR(0, camera.transform.pitch, 1e-4);
}

TEST(EditCamera, ClimbsAtALowerRate)
{
  EditCamera camera;
  camera.transform.pitch = 90; // straight down
  EditCameraInput input;
  input.width = 100, input.height = 100, input.mouseX = 50, input.mouseY = 50;
  input.forward = true;
  camera.MoveCamera(100, input);
  EXPECT_NEAR(-0.4f * 100 * 0.01f, camera.transform.pos.y, 1e-4);
}

class EditViewTest : public testing::Test
{
protected:
  EditState state;
  EditView view{state};
};

TEST_F(EditViewTest, DragsMoveByButtonAndModifier)
{
  const struct
  {
    int button, dx, dy, modifiers;
    DVector3 pos;
    float pitch, yaw;
  } cases[] = {
      {3, 72, 0, 0, {0, 0, 0}, 0, 30},
      {3, 72, 0, QMOD_CTRL, {0, 0, 0}, 0, 60},
      {3, 0, 288, QMOD_ALT, {0, 0, 0}, 10, 0},
      {1, 72, 0, 0, {-20, 0, 0}, 0, 0},
      {1, 0, 288, 0, {0, 0, -100}, 0, 0},
      {1, 72, 0, QMOD_CTRL, {-100, 0, 0}, 0, 0},
      {1, 72, 0, QMOD_CTRL | QMOD_ALT, {-100, 0, 0}, 0, 0},
      {1, 72, 0, QMOD_ALT, {-0.4f, 0, 0}, 0, 0},
      {2, 72, 72, 0, {0, 0, 0}, 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.button << " " << c.dx << " " << c.dy << " " << c.modifiers);
    state.camera.transform = {};
    view.MousePress(c.button, 100, 100, c.modifiers);
    view.MouseMotion(100 + c.dx, 100 + c.dy, c.modifiers);
    view.MouseRelease(c.button);
    EXPECT_NEAR(c.pos.x, state.camera.transform.pos.x, 1e-3);
    EXPECT_NEAR(c.pos.y, state.camera.transform.pos.y, 1e-3);
    EXPECT_NEAR(c.pos.z, state.camera.transform.pos.z, 1e-3);
    EXPECT_NEAR(c.pitch, state.camera.transform.pitch, 1e-3);
    EXPECT_NEAR(c.yaw, state.camera.transform.yaw, 1e-3);
  }
  view.MousePress(1, 0, 0, 0);
  view.MousePress(3, 0, 0, 0);
  state.camera.transform = {};
  view.MouseMotion(0, 288, 0);
  EXPECT_NEAR(-50, state.camera.transform.pos.y, 1e-3);
}

TEST_F(EditViewTest, OrbitKeepsItsPivotInTheMiddle)
{
  state.camera.transform.pos = {5, 1, 5};
  view.StartObjectMode();
  EXPECT_NEAR(45, state.camera.transform.pos.z, 1e-3) << "40 metres back along the view axis";
  view.OrbitApply(370, 30);
  EXPECT_NEAR(10, state.camera.transform.yaw, 1e-3);
  const EditRotation rotation(state.camera.transform.yaw, state.camera.transform.pitch, 0);
  const DVector3 ahead = -rotation.Column(2);
  EXPECT_NEAR(1, glm::dot(ahead, glm::normalize(state.orbitPivot - state.camera.transform.pos)), 1e-5);
  for (int i = 0; i < 10000; ++i)
    view.Wheel(120, 0);
  EXPECT_FLOAT_EQ(0.01f, state.orbitFactor);
}

TEST_F(EditViewTest, FocusIsOnTheSelectedModelsThatAreSomewhere)
{
  RTrackNode nodes[3]; // the last without a model
  for (const int i : {0, 1}) {
    auto geode = std::make_unique<DGeode>("box");
    geode->AddGeob()->vertex = {{float(i) * 10, 0, 0}, {float(i) * 10 + 6, 8, 0}};
    nodes[i].sceneNode = std::make_unique<WorldGeodeNode>(nullptr, "box");
    nodes[i].sceneNode->SetGeode(std::move(geode), "box");
  }
  const struct
  {
    int mode;
    std::vector<int> selected;
    float distance;
    DVector3 pivot;
  } cases[] = {{3, {0, 1, 2}, 10, {8, 4, 0}},
               {9, {1}, 10, {13, 4, 0}},
               {3, {2}, 77, {7, 7, 7}},
               {3, {}, 77, {7, 7, 7}},
               {1, {0}, 77, {7, 7, 7}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.mode << " " << c.selected.size());
    state.curMode = c.mode;
    state.SelectedNodes.clear();
    for (const int i : c.selected)
      state.SelectedNodes.push_back({i, &nodes[i]});
    state.orbitDistance = 77;
    state.orbitPivot = {7, 7, 7};
    state.orbitFactor = 0.5f;
    view.FocusSelection();
    EXPECT_EQ(2, state.orbitFactor);
    EXPECT_FLOAT_EQ(c.distance, state.orbitDistance);
    EXPECT_EQ(c.pivot, state.orbitPivot);
  }
}

TEST_F(EditViewTest, UnprojectReportsAMatrixWithoutInverse)
{
  ReportCapture reports;
  view.SetMatrices(DMatrix4(0.0f), DMatrix4(1.0f));
  DVector3 world(1.0f);
  EXPECT_FALSE(view.Unproject({1, 1, 0.1f}, world));
  EXPECT_EQ(DVector3(0.0f), world);
  EXPECT_TRUE(reports.Contains("Unproject failed"));
}

TEST_F(EditViewTest, MouseMapsTheFrameToTheView)
{
  state.viewRect = {15, 32, 880, 640};
  state.frameWidth = 1280;
  state.frameHeight = 800;
  int x = 640, y = 400;
  view.MouseToView(x, y);
  EXPECT_EQ(455, x);
  EXPECT_EQ(352, y);
}

TEST_F(EditViewTest, PicksTheNearestNodeWhereItIsDrawn)
{
  RTrackVRML track;
  state.curTrack = &track;
  state.curMode = 9;
  state.viewRect = {0, 0, 100, 100};
  view.SetShellSize(100, 100);
  // Walls before the camera, which looks from the origin along -z.
  const auto add = [&](float z, uint32_t flags) -> RTrackNode& {
    auto node = std::make_unique<RTrackNode>();
    node->flags = flags;
    auto geode = std::make_unique<DGeode>("wall");
    DGeob& geob = *geode->AddGeob();
    geob.vertex = {{-2, -2, z}, {2, -2, z}, {0, 3, z}};
    geob.index = {0, 1, 2};
    geob.FinalizeGeob();
    node->sceneNode = std::make_unique<WorldGeodeNode>(nullptr, "wall");
    node->sceneNode->SetGeode(std::move(geode), "wall");
    node->CalcBounds();
    RTrackNode& added = *node;
    EXPECT_TRUE(track.AddNode(std::move(node)));
    return added;
  };
  add(-2, RTrackNode::SKY);
  add(-20, 0);
  RTrackNode& moved = add(-10, RTrackNode::RELATIVE_POS);
  moved.transformNode = std::make_unique<WorldTransformationNode>(nullptr, "moved");
  const auto picked = [&] {
    DVector3 out(0.0f);
    view.PickRay(50, 50, {}, out);
    return out;
  };
  EXPECT_EQ(DVector3(0, 0, -10), picked());
  moved.transformNode->SetMatrix(glm::translate(DMatrix4(1.0f), {0, 0, 5}));
  EXPECT_EQ(DVector3(0, 0, -5), picked());
  EXPECT_EQ(2, state.SelectedNodes.at(0).index);
  moved.transformNode->SetMatrix(glm::translate(DMatrix4(1.0f), {50, 0, 0})); // away
  EXPECT_EQ(DVector3(0, 0, -20), picked());
  EXPECT_EQ(1, state.SelectedNodes.at(0).index);
  // Twice as large: the corner that is drawn nearest is snapped to.
  moved.transformNode->SetMatrix(glm::scale(DMatrix4(1.0f), {2, 2, 0.5f}));
  state.paintVertices = true;
  EXPECT_EQ(DVector3(-4, -4, -5), picked());
}

} // namespace

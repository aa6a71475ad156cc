#include "editor/modelsmode.h"

#include "editor/editstate.h"
#include "editor/editview.h"
#include "editor/fakehost.h"
#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "geometry/dgeode.h"
#include "geometry/dtexture.h"
#include "scene/worldgeodenode.h"
#include "support/recordingoverlay.h"
#include "support/reportcapture.h"
#include "support/tempdir.h"
#include "track/rtrackvrml.h"
#include "ui/qkeys.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

// A triangle of two by three metres at height 1.
std::unique_ptr<DGeode> Triangle(const std::string& name)
{
  auto geode = std::make_unique<DGeode>(name);
  geode->AddMaterial()->name = "asphalt";
  DGeob& geob = *geode->AddGeob();
  for (const DVector3& corner : {DVector3(-1, 1, 0), DVector3(1, 1, 0), DVector3(0, 1, 3)}) {
    geob.vertex.push_back(corner);
    geob.texCoord[0].push_back({corner.x, corner.z});
  }
  for (const uint16_t i : std::initializer_list<uint16_t>{2, 1, 0})
    geob.index.push_back(i);
  geob.AddBurst({.start = 0, .count = 9, .mtlID = 4});
  geob.FinalizeGeob();
  return geode;
}

class ModelsModeTest : public testing::Test
{
protected:
  ModelsModeTest() { state.curTrack = &track; }
  RTrackNode& Add(const std::string& name, uint32_t flags)
  {
    auto node = std::make_unique<RTrackNode>();
    node->name = name;
    node->file = name + ".dof";
    node->flags = flags;
    node->sceneNode = std::make_unique<WorldGeodeNode>(nullptr, name.c_str());
    node->sceneNode->SetGeode(Triangle("data/" + node->file), node->file);
    RTrackNode& added = *node;
    EXPECT_TRUE(track.AddNode(std::move(node)));
    return added;
  }
  RTrackNode& Node(int i) { return **track.nodes.At(i); }
  DGeob& Geob(int i) { return *Node(i).Geode()->geob[0]; }
  // The indices of the selected nodes, "0 2".
  std::string Selected() const
  {
    std::string text;
    for (const SelectedNode& selected : state.SelectedNodes)
      text += (text.empty() ? "" : " ") + std::to_string(selected.index);
    return text;
  }
  std::vector<std::string> Hud()
  {
    host.hud.clear();
    mode.ModeHud();
    return host.hud;
  }
  QEvent Click(EditList::Answer answer) const
  {
    QEvent event;
    event.type = QEvent::CLICK;
    event.n = static_cast<int>(answer);
    return event;
  }

  RTrackVRML track;
  EditState state;
  FakeHost host;
  EditView view{state};
  ModelsMode mode{state, host, view};
};

TEST_F(ModelsModeTest, StepsThroughTheNodes)
{
  for (const char* name : {"a", "b", "c"})
    Add(name, 6);
  const struct
  {
    int key;
    const char* selected;
  } steps[] = {{QKEY_PGDN, ""},  {QKEY_PGUP, ""},  {QKEY_END, "2"},  {QKEY_PGDN, "2"},      {QKEY_PGUP, "1"},
               {QKEY_HOME, "0"}, {QKEY_PGUP, "0"}, {QKEY_PGDN, "1"}, {'H' | QMOD_CTRL, "1"}};
  for (const auto& step : steps) {
    EXPECT_FALSE(mode.ModeKey(step.key)) << "the global keys run too";
    EXPECT_EQ(step.selected, Selected()) << step.key;
  }
  view.AddSelectedNode(0);
  view.AddSelectedNode(1);
  EXPECT_EQ("1 0", Selected()) << "each only once";
  mode.ModeKey(QKEY_PGDN);
  EXPECT_EQ("2", Selected()) << "after the first selected one";
}

// By table: the bit, the button, the key, and the word in the HUD.
TEST_F(ModelsModeTest, EachFlagHasItsButtonItsKeyAndItsWord)
{
  const struct
  {
    uint32_t bit;
    int button;
    int key;
    const char* label;
    const char* word;
  } rows[] = {
      {1, 1, 'Y', "Toggle flag: Sk(y)", "Sky"},
      {2, 2, 'C', "Toggle flag: (C)ollide", "Collide"},
      {4, 3, 'S', "Toggle flag: (S)urface", "Surface"},
      {8, 4, 'R', "Toggle flag: (R)elative", "RelativePos"},
      {1024, 5, QMOD_CTRL | 'M', "Toggle Flag: Movable (Ctrl-M)", "Movable"},
      {256, 6, 0, "Toggle flag: Receive Shadow", "ReceiveShadow"},
      {512, 7, 0, "Toggle flag: Receive Light", "ReceiveLight"},
  };
  Add("a", 0);
  mode.ModeSetup();
  ASSERT_EQ(10u, host.buttons.size());
  mode.ModeOp(1); // nothing is selected
  EXPECT_EQ(0u, Node(0).flags);
  mode.ModeKey(QKEY_HOME);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.label);
    EXPECT_EQ(row.label, host.buttons[static_cast<size_t>(row.button)]);
    mode.ModeOp(row.button);
    EXPECT_EQ(row.bit, Node(0).flags);
    EXPECT_EQ(row.bit, Geob(0).userFlags) << "the model's copy";
    EXPECT_EQ("Flags: " + std::string(row.word) + " ", Hud().at(1));
    if (row.key)
      mode.ModeKey(row.key);
    else
      mode.ModeOp(row.button);
    EXPECT_EQ(0u, Node(0).flags);
    EXPECT_EQ(0u, Geob(0).userFlags);
  }
  EXPECT_EQ("Goto line start", host.buttons[0]);
  EXPECT_EQ("Copy flags to group (Shift-G)", host.buttons[8]);
  EXPECT_EQ("3D/material information(Shift-I)", host.buttons[9]);
}

TEST_F(ModelsModeTest, NodesThatDifferAllGetTheFlagFirst)
{
  Add("a", 2);
  Add("b", 4);
  Add("c", 2);
  for (int i = 0; i < 3; ++i)
    view.AddSelectedNode(i);
  EXPECT_EQ((std::vector<std::string>{"Object: 3 nodes selected (out of 3)", "Shared flags: <no flags set>",
                                      "Unshared flags: Collide Surface "}),
            Hud());
  mode.ModeKey('C');
  EXPECT_EQ((std::vector<uint32_t>{2, 6, 2}), (std::vector<uint32_t>{Node(0).flags, Node(1).flags, Node(2).flags}));
  EXPECT_EQ("Shared flags: Collide ", Hud().at(1));
  mode.ModeKey('C');
  EXPECT_EQ((std::vector<uint32_t>{0, 4, 0}), (std::vector<uint32_t>{Node(0).flags, Node(1).flags, Node(2).flags}));
}

TEST_F(ModelsModeTest, ReceivingFlagsReachTheBurstsOfTheFirstLevel)
{
  Add("a", 256);
  Geob(0).burst[0].flags = 3;
  mode.ModeKey(QKEY_HOME);
  mode.ModeOp(7);
  EXPECT_EQ(3u | 8u, Geob(0).burst[0].flags) << "the other flag's bit isn't touched";
  mode.ModeOp(6);
  mode.ModeOp(6);
  EXPECT_EQ(3u | 4u | 8u, Geob(0).burst[0].flags);
  mode.ModeOp(6);
  mode.ModeOp(7);
  EXPECT_EQ(3u, Geob(0).burst[0].flags);
}

TEST_F(ModelsModeTest, HudTellsOfOneNodeOfNoneAndOfUnknownFlags)
{
  Add("a", 6);
  Add("tree", 0x80000000u | 64 | 1);
  EXPECT_EQ((std::vector<std::string>{"Object: 0 nodes selected (out of 2)", "Flags: ---"}), Hud());
  mode.ModeKey(QKEY_END);
  EXPECT_EQ((std::vector<std::string>{"Object: tree.dof (2 out of 2)", "Flags: Sky F_??? F_??? "}), Hud());
  Node(1).flags = 0;
  EXPECT_EQ("Flags: <no flags set>", Hud().at(1));
}

TEST_F(ModelsModeTest, FlagsAreCopiedToWhatThePatternNames)
{
  Add("tree1", 12);
  Add("Tree2", 6);
  Add("wall", 6);
  const auto message = [&](int selectedCount) {
    state.SelectedNodes.clear();
    for (int i = 0; i < selectedCount; ++i)
      view.AddSelectedNode(i);
    host.messages.clear();
    mode.ModeKey(QMOD_SHIFT | 'G');
    return host.messages.empty() ? std::string() : host.messages[0];
  };
  EXPECT_EQ("Error: Copy flags to group only works with 1 object selected.", message(0));
  EXPECT_EQ("Error: Copy flags to group only works with 1 object selected.", message(2));
  EXPECT_TRUE(host.prompts.empty());
  host.answers = {FakeHost::CANCEL, "TREE?.dof", "*"};
  EXPECT_EQ("", message(1));
  EXPECT_EQ("Copy flags to group: Enter pattern of objs to copy flags to:", host.prompts.at(0));
  EXPECT_EQ("tree1.dof", host.filled.at(0));
  EXPECT_EQ(6u, Node(1).flags);
  EXPECT_EQ("Notice: 2 objects matched.", message(1));
  EXPECT_EQ(12u, Node(1).flags);
  EXPECT_EQ(0u, Geob(1).userFlags) << "the copies in the model stay";
  EXPECT_EQ(6u, Node(2).flags);
  EXPECT_EQ("Notice: 3 objects matched.", message(1)) << "the selected one included";
}

TEST_F(ModelsModeTest, TheListTakesAllKeysAndFindsByLetter)
{
  EXPECT_FALSE(mode.ModeKey('H'));
  EXPECT_FALSE(mode.HasDialog()) << "there is nothing to choose from";
  for (const char* name : {"wall", "_sky", "tree", "Grass", "tree"})
    Add(name, 6);
  mode.ModeKey('H');
  ASSERT_TRUE(mode.HasDialog());
  EXPECT_EQ("Select an track node", host.prompts.at(0));
  EXPECT_EQ((std::vector<std::string>{"Grass", "_sky", "tree", "tree", "wall"}), host.listItems);
  EXPECT_EQ(0, host.listCursor);
  const struct
  {
    int key;
    int cursor;
  } moves[] = {{'T', 2},       {'T', 2},
               {QKEY_DOWN, 3}, {'G', 0},
               {QKEY_UP, 0},   {QMOD_SHIFT | QKEY_MINUS, 1},
               {'X', 1},       {QKEY_KP_0 + 1, 1}, // is 'a' as a character
               {QKEY_F4, 1},   {QMOD_CTRL | 'W', 1},
               {'C', 1},       {QKEY_DOWN, 2}};
  for (const auto& move : moves) {
    EXPECT_TRUE(mode.ModeKey(move.key));
    EXPECT_EQ(move.cursor, host.listCursor) << move.key;
  }
  EXPECT_TRUE(mode.ModeKey(QKEY_ENTER));
  EXPECT_FALSE(mode.HasDialog());
  EXPECT_EQ("2", Selected()) << "of equal names the first of the table";
  EXPECT_EQ(std::vector<int>{'E'}, host.posted) << "the view turns to it";
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(6u, Node(i).flags) << "no letter reached a command";
  mode.ModeKey('H');
  EXPECT_EQ(2, host.listCursor) << "opens at the selected node";
  EXPECT_TRUE(mode.ModeKey(QKEY_ESC));
  EXPECT_FALSE(mode.HasDialog());
  EXPECT_EQ(1u, host.posted.size());
}

TEST_F(ModelsModeTest, TheListsButtonsDoWhatItsKeysDo)
{
  Add("b", 6);
  Add("a", 6);
  mode.ModeKey('H');
  EXPECT_FALSE(mode.ModeEvent(Click(EditList::Answer::NONE)));
  EXPECT_TRUE(mode.ModeEvent(Click(EditList::Answer::CANCEL)));
  EXPECT_EQ("", Selected());
  mode.ModeKey('H');
  EXPECT_TRUE(mode.ModeEvent(Click(EditList::Answer::OK)));
  EXPECT_EQ("1", Selected());
  EXPECT_EQ(std::vector<int>{'E'}, host.posted);
  EXPECT_FALSE(mode.HasDialog());
}

TEST_F(ModelsModeTest, ColorsFollowTheBoxAndTheSettingHoldsAtEachEntry)
{
  mode.ModeSetup();
  EXPECT_EQ("Colorize flags (Collide/Surface)", host.checkLabel);
  EXPECT_TRUE(host.check && host.colored) << "without a setting it is on";
  mode.ModeKey('V');
  EXPECT_FALSE(host.check || host.colored);
  host.check = true; // by the mouse
  EXPECT_FALSE(mode.ModeEvent(Click(EditList::Answer::NONE)));
  EXPECT_TRUE(host.colored);

  TempDir dir;
  QInfo settings(dir.Path("pavex.ini"), QInfo::NO_OPEN_WARNING);
  settings.SetString("settings.colorize_props", "0");
  state.settings = &settings;
  mode.ModeSetup();
  EXPECT_FALSE(host.check || host.colored);
  mode.ModeKey('V');
  mode.ModeSetup();
  EXPECT_FALSE(host.check || host.colored) << "a change lasts as long as the mode";
  mode.ModeKey('V');
  mode.StoreSettings(settings);
  EXPECT_STREQ("1", settings.GetStringDirect("settings.colorize_props"));
}

TEST_F(ModelsModeTest, SelectedNodesBlinkInAWalkingBox)
{
  Add("a", 6);
  state.now = 10000;
  mode.ModeKey(QKEY_HOME);
  const auto visibleAt = [&](int64_t now) {
    RecordingOverlay overlay;
    state.now = now;
    mode.ModePaint(overlay);
    return Node(0).sceneNode->IsVisible();
  };
  EXPECT_FALSE(visibleAt(10000));
  EXPECT_FALSE(visibleAt(10449));
  EXPECT_TRUE(visibleAt(10450));
  EXPECT_TRUE(visibleAt(10899));
  EXPECT_FALSE(visibleAt(10900));
  view.ClearSelectedNodes();
  EXPECT_TRUE(Node(0).sceneNode->IsVisible());
  mode.ModeKey(QKEY_HOME);

  RecordingOverlay overlay;
  state.now = 12050;
  mode.ModePaint(overlay);
  ASSERT_EQ(2u, overlay.items.size());
  for (const auto& item : overlay.items) {
    EXPECT_EQ("lines", item.kind);
    EXPECT_EQ(24u, item.points.size());
    EXPECT_FLOAT_EQ(0.5f, item.style.width);
    EXPECT_TRUE(item.style.blend && item.style.depthTest);
    float length = 0;
    for (size_t i = 0; i + 1 < item.points.size(); i += 2)
      length += glm::distance(item.points[i], item.points[i + 1]);
    EXPECT_FLOAT_EQ(4 * (2 + 0 + 3), length) << "four edges along each axis";
  }
  EXPECT_EQ(0x000000FFu, overlay.items[0].style.color.GetRGBA());
  EXPECT_EQ(0xFFFFFFFFu, overlay.items[1].style.color.GetRGBA());
  EXPECT_EQ(0x7878, overlay.items[0].style.stipple) << "0xF0F0F0 >> 1";
  EXPECT_EQ(0x8787, overlay.items[1].style.stipple);
}

class ModelsReportTest : public ModelsModeTest
{
protected:
  ModelsReportTest()
  {
    QFileHooks().openDocument = [this](const std::string& what, const std::string&) {
      opened = what;
      return true;
    };
  }
  ~ModelsReportTest() override { QFileHooks().openDocument = nullptr; }
  static int Count(const std::string& text, const std::string& part)
  {
    int n = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
      ++n;
    return n;
  }
  TempDir dir;
  InDirectory inside{dir.Path()};
  std::string opened;
};

TEST_F(ModelsReportTest, TellsOfGeobsAndMaterials)
{
  mode.ModeKey(QMOD_SHIFT | 'I');
  EXPECT_FALSE(std::filesystem::exists("report.txt")) << "nothing is selected";
  Add("a", 6);
  DMaterial& material = *Node(0).Geode()->material[0];
  material.AddSubMaterial()->name = std::string(300, 'x');
  material.shininess = 12.5f;
  DTexturePtr texture = std::make_unique<DTexture>();
  texture->SetName("road.tga");
  material.texture.push_back(texture);
  mode.ModeKey(QKEY_HOME);
  mode.ModeOp(9);
  const std::string line(74, '=');
  const std::string head = line + "\nLevel of Detail model 1: data/a.dof\n" + line +
                           "\n\n"
                           "Number of triangles/polygons: 1\n"
                           "Size              : X     2.000, Y     0.000, Z     3.000\n"
                           "Minimum           : X    -1.000, Y     1.000, Z     0.000\n"
                           "Maximum           : X     1.000, Y     1.000, Z     3.000\n"
                           "\n========== 1 geobs =============\n"
                           "\nGeob 0 (1 triangles):\n\n"
                           "  Vertices             :    3, indices: 3\n"
                           "  Normals present      : NO\n"
                           "  Vertex colors present: NO\n"
                           "  Texcoord0 present    : YES\n"
                           "  Texcoord1 present    : NO\n"
                           "  Bursts: 1, materialref 0\n"
                           "    burst 0: count 9, mtlid 4 (1 triangles)\n"
                           "\n========== 1 materials =============\n\n"
                           " Material 0 ('asphalt')\n"
                           "   texture       road.tga\n"
                           "   ambient       0.20,0.20,0.20 , 0.20\n"
                           "   diffuse       0.80,0.80,0.80 , 1.00\n"
                           "   specular      0.00,0.00,0.00 , 1.00\n"
                           "   emission      0.00,0.00,0.00 , 1.00\n"
                           "   shininess     12.50\n"
                           "   transparency  0.00\n"
                           "   uvw U offset  0.00\n"
                           "   uvw V offset  0.00\n"
                           "   uvw U tiling  1.00\n"
                           "   uvw V tiling  1.00\n"
                           "   submaterials: 1, layers 1\n\n"
                           "   Submaterial 0 ('" +
                           std::string(300, 'x') + "')\n     texture       <none>\n";
  const std::string text = FileText("report.txt");
  EXPECT_EQ(head, text.substr(0, head.size()));
  EXPECT_TRUE(text.ends_with("  submaterials: 0, layers 1\n\n\n"));
  EXPECT_EQ("report.txt", opened);
}

TEST_F(ModelsReportTest, ListsTextureCoordinatesOnlyWhenWanted)
{
  Add("a", 6);
  QInfo settings("pavex.ini", QInfo::NO_OPEN_WARNING);
  settings.SetString("report.report_tc", "1");
  state.settings = &settings;
  mode.ModeKey(QKEY_HOME);
  mode.ModeKey(QMOD_SHIFT | 'I');
  EXPECT_NE(std::string::npos, FileText("report.txt").find("  - Texcoord0 0: 0.00 3.00\n  - Texcoord0 1: 1.00 0.00\n"))
      << "in the order of the indices";
  settings.SetString("report.report_tc", "0");
  mode.ModeKey(QMOD_SHIFT | 'I');
  EXPECT_EQ(std::string::npos, FileText("report.txt").find("  - Texcoord0"));
}

TEST_F(ModelsReportTest, ThreeLevelsGiveThreeBlocksAndNoModelOneLine)
{
  for (const char* name : {"tree.dof", "tree_lod1.dof", "tree_lod2.dof"})
    ASSERT_TRUE(Triangle(name)->ExportDOF(name));
  const float distances[RTrackNode::LODS] = {10, 20, 30};
  RTrackNode& node = Add("tree", 6);
  ASSERT_TRUE(node.sceneNode->Load("tree.dof", distances, false));
  mode.ModeKey(QKEY_HOME);
  mode.ModeKey('C');
  for (int level = 0; level < 3; ++level)
    EXPECT_EQ(4u, node.sceneNode->GetGeode(level)->geob[0]->userFlags) << "flags reach each level";
  mode.ModeKey(QMOD_SHIFT | 'I');
  std::string text = FileText("report.txt");
  EXPECT_EQ(3, Count(text, "Level of Detail model "));
  EXPECT_EQ(1, Count(text, "Level of Detail model 3: tree_lod2.dof\n"));
  node.sceneNode = std::make_unique<WorldGeodeNode>(nullptr, "empty");
  mode.ModeKey(QMOD_SHIFT | 'I');
  EXPECT_EQ("No model loaded.\n", FileText("report.txt"));
}

TEST_F(ModelsReportTest, AFileThatCannotBeWrittenIsTold)
{
  std::filesystem::create_directory("report.txt");
  Add("a", 6);
  mode.ModeKey(QKEY_HOME);
  mode.ModeKey(QMOD_SHIFT | 'I');
  EXPECT_EQ((std::vector<std::string>{"Error: Can't open report file"}), host.messages);
  EXPECT_EQ("", opened);
}

} // namespace

#include "geometry/dofbytes.h"
#include "support/tempdir.h"
#include "tool/toolrun.h"

#include <gtest/gtest.h>

namespace {

const Bytes MATERIAL = Chunk("MHDR", Text("Wall Top.01") + Text("Standard")) +
                       Chunk("MCOL", Floats({1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1, 0.1f, 0.2f, 0.3f, 0.4f, 8})) +
                       Chunk("MUVW", Floats({1, 2, 3, 4, 5, 6, 7})) + Chunk("MTRA", Floats({0.5f}) + U32(1)) +
                       Chunk("MCFL", U32(0x80000001)) + Chunk("MTEX", U32(1) + Text("Sub\\Wall.TGA"));
const Bytes GEOB = Chunk("GHDR", U32(7) + U32(9) + U32(0)) + INDI + VERT + TVER +
                   Chunk("VCOL", U32(3) + Floats({1, 0, 0, 0, 1, 0, 0, 0, 1})) + BRST +
                   Chunk("OVRT", U32(3) + Floats({0, 0, 1, 1, 0, 1, 0, 1, 1}));

class ModelVerbs : public testing::Test
{
protected:
  ToolRun Run(std::vector<std::string> args) const
  {
    args.insert(args.begin(), {"--quiet", "model"});
    return RunTool(dir.Path(), args);
  }
  TempDir dir;
};

} // namespace

TEST_F(ModelVerbs, DumpHoldsTheWholeModel)
{
  dir.Write(
      "sub.dof",
      Dof(Chunk("MATS", U32(1) + Chunk("MAT0", MATERIAL + Chunk("MSUB", U32(1) + Chunk("MAT0", "MEND")) + "MEND")) +
          Geobs({GEOB, Chunk("VERT", U32(0))})));
  const std::string plain = R"("className":"","ambient":[0.2,0.2,0.2,0.2],"diffuse":[0.8,0.8,0.8,1.0],)"
                            R"("specular":[0.0,0.0,0.0,1.0],"emission":[0.0,0.0,0.0,1.0],"shininess":0.0,)"
                            R"("transparency":0.0,"blendMode":0,"creationFlags":0,"uvw":[0.0,0.0,1.0,1.0,0.0,0.0,0.0],)"
                            R"("textures":[],"sub":[]})";
  const std::string head =
      R"({"name":"sub.dof","materials":[{"name":"wall_top","className":"Standard","ambient":[1.0,0.0,0.0,1.0],)"
      R"("diffuse":[0.0,1.0,0.0,1.0],"specular":[0.0,0.0,1.0,1.0],"emission":[0.1,0.2,0.3,0.4],"shininess":8.0,)"
      R"("transparency":0.5,"blendMode":1,"creationFlags":2147483649,"uvw":[1.0,2.0,3.0,4.0,5.0,6.0,7.0],)"
      R"("textures":["wall.tga"],"sub":[{"name":"",)" +
      plain +
      R"(]}],"geobs":[{"flags":0,"paintFlags":9,"materialRef":0,"vertexCount":3,"indexCount":3,"bursts":[[0,9,0,3]],)"
      R"("channels":1,"hasNormals":true,"hasColors":true,"boundingBox":[0.0,0.0,0.0,1.0,1.0,0.0])";
  const std::string second = R"("flags":0,"paintFlags":0,"materialRef":0,"vertexCount":0,"indexCount":0,"bursts":[],)"
                             R"("channels":0,"hasNormals":false,"hasColors":false,)"
                             R"("boundingBox":[0.0,0.0,0.0,0.0,0.0,0.0])";
  const std::string tail = R"(}],"boundingBox":[0.0,0.0,0.0,1.0,1.0,0.0]})"
                           "\n";
  EXPECT_EQ(head + "},{" + second + tail, Run({"dump", "sub.dof"}).out);
  EXPECT_EQ(
      head +
          R"(,"index":[0,1,2],"vertex":[0.0,0.0,0.0,1.0,0.0,0.0,0.0,1.0,0.0],)"
          R"("normal":[0.0,0.0,1.0,0.0,0.0,1.0,0.0,0.0,1.0],"texCoord":[[0.0,0.0,1.0,0.0,0.0,1.0]],)"
          R"("color":[1.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,1.0],"baseVertex":[0.0,0.0,1.0,1.0,0.0,1.0,0.0,1.0,1.0]},{)" +
          second + R"(,"index":[],"vertex":[],"normal":null,"texCoord":[],"color":null,"baseVertex":null)" + tail,
      Run({"dump", "sub.dof", "--arrays"}).out);
}

TEST_F(ModelVerbs, ValidateGivesALineForEachProblem)
{
  const Bytes bad = Chunk("INDI", U32(3) + Shorts({0, 7, 8})) + VERT + TVER + BRST;
  dir.Write("good.dof", Dof(Materials({MATERIAL}) + Geobs({GEOB})));
  dir.Write("bad.dof", Dof(Materials({MATERIAL}) + Geobs({GEOB, bad})));
  const Bytes whole = Dof(Geobs({GEOB}));
  dir.Write("cut.dof", whole.substr(0, whole.size() - 5));
  dir.Write("other.dof", "none");
  ToolRun run = Run({"validate", "good.dof"});
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_EQ("", run.out);
  run = Run({"validate", "good.dof", "bad.dof", "cut.dof", "other.dof"});
  EXPECT_EQ(1, run.status);
  EXPECT_EQ("bad.dof: Geode bad.dof has bad indices in geob (index[1]=7>3 vertices.\n"
            "bad.dof: Geode bad.dof has bad indices in geob (index[2]=8>3 vertices.\n"
            "cut.dof: the file ends before the model does\n",
            run.out);
  EXPECT_EQ("pavex-tool: can't read other.dof as a model\n", run.err);
}

TEST_F(ModelVerbs, RewriteModelsInPlaceAndGoOnBehindABadOne)
{
  const Bytes model = Dof(Chunk("MATS", U32(1) + Chunk("MAT0", MATERIAL + "MEND")) + Geobs({GEOB}));
  dir.Write("a.dof", model);
  dir.Write("bad.dof", "DOF?");
  dir.Write("b.dof", model);
  const ToolRun optimized = Run({"optimize", "a.dof", "bad.dof", "b.dof"});
  EXPECT_EQ(1, optimized.status);
  EXPECT_EQ("pavex-tool: can't read bad.dof as a model\n", optimized.err);
  EXPECT_NE(std::string::npos, Run({"dump", "b.dof"}).out.find(R"("diffuse":[0.0,1.0,0.0,1.0])"));
  EXPECT_EQ(0, Run({"light", "a.dof"}).status);
  const std::string lit = Run({"dump", "a.dof"}).out;
  EXPECT_NE(std::string::npos, lit.find(R"("diffuse":[1.0,1.0,1.0,1.0])")) << lit;
  EXPECT_NE(std::string::npos, lit.find(R"("emission":[0.8,0.2,0.3,0.4])")) << lit;
  EXPECT_EQ(0, Run({"convert", "a.dof", "a.wrl", "--optimize"}).status);
  EXPECT_EQ(0, Run({"convert", "a.wrl", "back.dof"}).status);
  EXPECT_NE(std::string::npos, Run({"dump", "back.dof"}).out.find(R"("vertexCount":3,"indexCount":3)"));
}

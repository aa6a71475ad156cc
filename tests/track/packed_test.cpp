#include "foundation/qappcore.h"
#include "foundation/qarchive.h"
#include "foundation/qbitmap.h"
#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"
#include "geometry/dworld.h"
#include "scene/worldgeodenode.h"
#include "scene/worldscene.h"
#include "support/reportcapture.h"
#include "track/smalltrack.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

// A track with a picture of 8 x 4 on the walls of its models.
void WriteTrack(const SmallTrack& small)
{
  small.WriteAll();
  small.Write("track.shd", "shader_wall\n{\n  layer0\n  {\n    map=wall.tga\n    cache=0\n  }\n}\n");
  QBitMap picture(32, 8, 4);
  picture.SetColorAt(3, 2, QColor(10, 20, 30));
  ASSERT_TRUE(picture.Write(small.Path("wall.tga").c_str(), QBitMap::TGA));
}

// What a load shows and a save behind it writes.
std::string LoadAndSave(const SmallTrack& small)
{
  WorldScene scene;
  DGlobals().world = scene.GetWorld();
  RTrackVRML track({.scene = &scene});
  track.SetName("small");
  if (!track.Load())
    return "not loaded";
  std::string text = track.name + " by " + track.creator + "\n";
  for (const auto& node : track.nodes) {
    const DGeode* geode = node->Geode();
    text += node->name + " " + std::to_string(geode ? geode->GetGeob(0)->VertexCount() : -1);
    const DMaterial* material = geode ? geode->GetMaterial(0) : nullptr;
    const DShader* shader = material ? material->shader : nullptr;
    const DTexture* map = shader && shader->LayerCount() > 0 ? shader->layer[0].texture.get() : nullptr;
    text +=
        map ? std::string(" ") + map->GetName() + " " + std::to_string(map->width) + "x" + std::to_string(map->height)
            : " plain";
    text += "\n";
  }
  EXPECT_TRUE(track.Save());
  for (const auto& [leaf, content] : small.SavedFiles())
    text += leaf + ":\n" + content;
  return text;
}

void Pack(const SmallTrack& small, const char* archive, std::initializer_list<const char*> leaves)
{
  QArchive ar(small.Path(archive), QArchive::CREATE);
  for (const char* leaf : leaves) {
    EXPECT_TRUE(ar.AddFile(small.Path(leaf), leaf)) << leaf;
    std::filesystem::remove(small.Path(leaf));
  }
  EXPECT_TRUE(ar.Close());
}

} // namespace

TEST(PackedTrack, OpensAsFromTheDisk)
{
  DResetGlobals();
  QAppCore app("test");
  SmallTrack small;
  WriteTrack(small);
  const std::string plain = LoadAndSave(small);
  EXPECT_NE(std::string::npos, plain.find("wall.tga 8x4")) << plain;
  WriteTrack(small); // as before the save
  Pack(small, "track.ar", {"track.ini", "special.ini", "spline.ini", "traffic.ini"});
  Pack(small, "graphics.ar", {"geometry.ini", "track.shd", "wall.tga", "box.dof", "tower.dof"});
  EXPECT_EQ(plain, LoadAndSave(small));
  EXPECT_EQ(0, app.GetArchives().Count()); // closed again
  // A file on the disk wins; what is no archive is said, and the rest opens.
  small.Write("track.ini", "track\n{\n  name=Newer\n}\n");
  small.Write("graphics.ar", "no archive at all");
  ReportCapture reports;
  EXPECT_EQ(0u, LoadAndSave(small).find("Newer"));
  EXPECT_TRUE(reports.Contains("graphics.ar"));
  DResetGlobals();
}

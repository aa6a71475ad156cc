#include "geometry/dgeode.h"
#include "geometry/dglobal.h"
#include "geometry/dpipe.h"
#include "geometry/dtexture.h"
#include "golden/glwindow.h"
#include "support/reportcapture.h"

#include <epoxy/gl.h>
#include <gtest/gtest.h>

namespace {

constexpr int SIZE = 64;

// A square of half the window's size around a place; the window shows -1 to 1.
class Square
{
public:
  explicit Square(const DVector3& middle) : geode("square"), material(*geode.AddMaterial()), geob(*geode.AddGeob())
  {
    geob.vertex = {{-0.5f, -0.5f, 0}, {0.5f, -0.5f, 0}, {0.5f, 0.5f, 0}, {-0.5f, 0.5f, 0}};
    geob.index = {0, 1, 2, 0, 2, 3};
    geob.texCoord[0] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    geob.normal.assign(4, DVector3(0, 0, 1));
    geob.AddBurst({0, 18, 0, 3});
    material.flags |= DMaterial::FLAT_COLOR;
    material.color = QColor(200, 100, 50);
    geode.Translate(middle.x, middle.y, middle.z);
    geob.FinalizeGeob();
    geode.transformation.translation = -middle;
  }
  DGeode geode;
  DMaterial& material;
  DGeob& geob;
};

class GeodeInOpenGL : public testing::Test
{
protected:
  void SetUp() override
  {
    if (!window.IsOpen())
      GTEST_SKIP() << "no software renderer";
    DThePipe().Invalidate();
    glViewport(0, 0, SIZE, SIZE);
    for (const GLenum mode : {GL_PROJECTION, GL_MODELVIEW}) {
      glMatrixMode(mode);
      glLoadIdentity();
    }
    glDisable(GL_LIGHTING);
  }
  void TearDown() override
  {
    DGlobals().centeredVertices = false;
    const int errors = window.IsOpen() ? window.TakeErrors() : 0;
    EXPECT_EQ(0, errors);
  }
  // The red of the pixel in the middle of a fresh picture, and 0 for a corner that isn't black.
  int Painted(DGeode& geode)
  {
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    geode.PaintTransformed();
    EXPECT_EQ(0, DThePipe().SyncCheck());
    QColor middle, corner;
    QBitMap& picture = window.Picture();
    picture.GetColorAt(SIZE / 2, SIZE / 2, middle);
    picture.GetColorAt(4, 4, corner);
    EXPECT_EQ(0, corner.GetR());
    return middle.GetR();
  }
  GlWindow window{SIZE, SIZE};
};

} // namespace

TEST_F(GeodeInOpenGL, IsPaintedFromMemoryAndFromBuffers)
{
  Square square({100, 0, 0});
  EXPECT_EQ(200, Painted(square.geode));
  square.geode.EnableVBO();
  EXPECT_NE(0u, square.geob.indexBuffer);
  EXPECT_EQ(200, Painted(square.geode));
  square.geode.DisableVBO();
  DGlobals().centeredVertices = true;
  square.geode.EnableVBO();
  EXPECT_EQ(200, Painted(square.geode));
  square.geode.Translate(5, 0, 0); // which sends the buffers anew
  EXPECT_EQ(0, Painted(square.geode));
  square.geode.flags |= DObject::HIDDEN;
  square.geode.Translate(-5, 0, 0);
  EXPECT_EQ(0, Painted(square.geode));
}

TEST_F(GeodeInOpenGL, QuadsArePaintedAndOtherPolygonsSaid)
{
  Square square({0, 0, 0});
  square.geob.index = {0, 1, 2, 3};
  square.geob.burst[0] = {0, 16, 0, 4};
  EXPECT_EQ(200, Painted(square.geode));
  ReportCapture reports;
  square.geob.burst[0].vperP = 5;
  EXPECT_EQ(0, Painted(square.geode));
  EXPECT_TRUE(reports.Contains("DGeob; draw poly NYI"));
}

TEST_F(GeodeInOpenGL, LayersAddUp)
{
  Square square({0, 0, 0});
  DMaterial& m = square.material;
  m.flags = DMaterial::KEEP_MATERIAL;
  glColor3f(1, 1, 1);
  const auto plain = [](int red) {
    auto picture = std::make_unique<QBitMap>(32, 2, 2);
    picture->Fill(nullptr, QColor(red, 0, 0));
    return std::make_unique<DBitMapTexture>(std::move(picture));
  };
  m.texture.push_back(plain(120));
  EXPECT_EQ(120, Painted(square.geode));
  m.AddLayer({plain(60), 0, 0.5f});
  glDepthFunc(GL_LEQUAL);
  glEnable(GL_DEPTH_TEST);
  DThePipe().Invalidate();
  // The second: 60 on the white of the vertices, by half over the first.
  EXPECT_EQ(120 / 2 + 255 / 2 + 1, Painted(square.geode));
  m.layer[1].texture = nullptr;
  EXPECT_EQ(120, Painted(square.geode));
}

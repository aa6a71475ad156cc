#include "geometry/dpipe.h"
#include "support/reportcapture.h"

#include <epoxy/gl.h>
#include <gtest/gtest.h>

namespace {

TEST(Pipe, WhatStandsIsNotAskedForAgain)
{
  DPipe pipe;
  const auto ask = [&] {
    pipe.Enable(GL_BLEND);
    pipe.BlendFunc(GL_SRC_ALPHA, GL_ONE);
    pipe.AlphaFunc(GL_GEQUAL, 0.5f);
    pipe.PolygonOffset(-1, 0);
    pipe.DepthMask(false);
    pipe.EnableArray(DPipe::NORMAL_ARRAY);
    for (int unit : {1, 0}) {
      pipe.SelectUnit(unit);
      pipe.EnableTexture(GL_TEXTURE_2D);
      pipe.SelectTexture(GL_TEXTURE_2D, 7);
      pipe.EnableTexCoordArray();
    }
  };
  ask();
  const int first = pipe.Changes();
  pipe.Enable(GL_BLEND);
  pipe.BlendFunc(GL_SRC_ALPHA, GL_ONE);
  pipe.AlphaFunc(GL_GEQUAL, 0.5f);
  pipe.PolygonOffset(-1, 0);
  pipe.SelectTexture(GL_TEXTURE_2D, 7);
  EXPECT_EQ(first, pipe.Changes());

  const struct
  {
    const char* what;
    void (*change)(DPipe&);
  } changes[] = {
      {"flag", [](DPipe& p) { p.Disable(GL_BLEND); }},
      {"destination", [](DPipe& p) { p.BlendFunc(GL_SRC_ALPHA, GL_ZERO); }},
      {"reference", [](DPipe& p) { p.AlphaFunc(GL_GEQUAL, 0.25f); }},
      {"sign", [](DPipe& p) { p.PolygonOffset(1, 0); }},
      {"target", [](DPipe& p) { p.SelectTexture(GL_TEXTURE_3D, 7); }},
      {"forgotten texture",
       [](DPipe& p) {
         p.ForgetTexture(7);
         p.SelectTexture(GL_TEXTURE_2D, 7);
       }},
  };
  for (const auto& c : changes) {
    SCOPED_TRACE(c.what);
    const int before = pipe.Changes();
    c.change(pipe);
    EXPECT_EQ(before + 1, pipe.Changes());
  }
  pipe.Invalidate();
  ask();
  EXPECT_EQ(first, pipe.Changes());
}

TEST(Pipe, UnknownStateIsReported)
{
  ReportCapture reports;
  DPipe pipe;
  pipe.Enable(GL_DITHER);
  pipe.Disable(GL_DITHER);
  pipe.EnableTexture(GL_TEXTURE_1D);
  pipe.SelectTexture(GL_TEXTURE_1D, 1);
  EXPECT_TRUE(reports.Contains("DPipe:Enable(3024) unknown"));
  EXPECT_TRUE(reports.Contains("DPipe:Disable(3024) unknown"));
  EXPECT_TRUE(reports.Contains("DPipe:TexUnit:Enable(3552) unknown"));
  EXPECT_TRUE(reports.Contains("DPipe:SelectTexture(); only supports 2D, 3D or Cubemap; texTarget is 0xde0"));
}

} // namespace

#include "app/demo/textures.h"

#include "foundation/qbitmap.h"

namespace {

uint8_t Byte(double v)
{
  return static_cast<uint8_t>(std::lround(std::clamp(v, 0.0, 1.0) * 255));
}

DemoColor Grey(double v)
{
  return {v, v, v, 1};
}

DemoColor Blend(const DemoColor& a, const DemoColor& b, double t)
{
  return a + (b - a) * std::clamp(t, 0.0, 1.0);
}

// Grain of single pixels, -0.5 to 0.5.
double Grain(double u, double v, double pixels, uint32_t salt)
{
  return DemoRandom(static_cast<int64_t>(u * pixels), static_cast<int64_t>(v * pixels), salt) - 0.5;
}

// Noise that repeats at the picture's edges.
double Tiled(double u, double v, int waves, int octaves, uint32_t salt)
{
  return DemoFractal(u * waves, v * waves, octaves, salt, waves);
}

} // namespace

std::unique_ptr<QBitMap> DemoPaint(int wid, int hgt, const std::function<DemoColor(double, double)>& formula)
{
  auto picture = std::make_unique<QBitMap>(32, wid, hgt);
  DemoPaintOver(*picture, 0, 0, 1, 1, [&](double u, double v) {
    DemoColor c = formula(u, v);
    c.a += 2; // as it is, alpha and all
    return c;
  });
  return picture;
}

void DemoPaintOver(QBitMap& picture, double u0, double v0, double u1, double v1,
                   const std::function<DemoColor(double, double)>& formula)
{
  const int wid = picture.GetWidth(), hgt = picture.GetHeight();
  const auto clampTo = [](double v, int size) { return std::clamp(static_cast<int>(std::lround(v * size)), 0, size); };
  for (int y = clampTo(v0, hgt); y < clampTo(v1, hgt); ++y)
    for (int x = clampTo(u0, wid); x < clampTo(u1, wid); ++x) {
      const DemoColor c = formula((x + 0.5) / wid, (y + 0.5) / hgt);
      uint8_t* p = picture.GetPixelAddress(x, y);
      if (c.a > 1.5) {
        p[0] = Byte(c.r), p[1] = Byte(c.g), p[2] = Byte(c.b), p[3] = Byte(c.a - 2);
        continue;
      }
      for (int k = 0; k < 3; ++k)
        p[k] = Byte(DemoMix(p[k] / 255.0, c[k], c.a));
      p[3] = std::max(p[3], Byte(c.a));
    }
}

std::unique_ptr<QBitMap> DemoPaintAsphalt()
{
  // Across the road from left to right; 12 m along. Lines at the edges, and the dark band where the tyres run.
  return DemoPaint(512, 512, [](double u, double v) {
    const double grain = Grain(u, v, 512, 1) * 0.10 + (Tiled(u, v, 24, 3, 2) - 0.5) * 0.07;
    double shade = 0.44 + grain;
    const double band = std::exp(-std::pow((u - 0.32) / 0.10, 2)) + std::exp(-std::pow((u - 0.66) / 0.10, 2));
    shade -= 0.065 * band * (0.7 + 0.6 * Tiled(u, v, 6, 2, 3));
    shade -= 0.07 * DemoSmooth(0.004, 0.0015, std::abs(u - 0.5)); // the paver's seam
    DemoColor c = Blend(Grey(shade), {shade * 1.04, shade, shade * 0.94, 1}, 0.6);
    const double edge = std::min(u, 1 - u);
    if (edge > 0.014 && edge < 0.030) {
      const double worn = 0.86 - 0.25 * Tiled(u, v, 32, 3, 4) + grain;
      c = Blend(c, Grey(worn), 0.9);
    } else if (edge <= 0.014) {
      c = Blend(c, {0.30, 0.30, 0.24, 1}, 0.5 * Tiled(u, v, 32, 2, 6)); // dirt from the verge
    }
    return c;
  });
}

std::unique_ptr<QBitMap> DemoPaintPitLane()
{
  return DemoPaint(256, 256, [](double u, double v) {
    const double shade = 0.50 + Grain(u, v, 256, 11) * 0.08 + (Tiled(u, v, 8, 4, 12) - 0.5) * 0.12;
    return DemoColor(shade * 1.02, shade, shade * 0.96, 1);
  });
}

std::unique_ptr<QBitMap> DemoPaintGrass()
{
  return DemoPaint(512, 512, [](double u, double v) {
    const double blades = Tiled(u, v, 64, 2, 21), tufts = Tiled(u, v, 12, 3, 22), dry = Tiled(u, v, 7, 3, 23);
    const double light = 0.72 + 0.34 * (blades - 0.5) + 0.30 * (tufts - 0.5) + 0.16 * Grain(u, v, 512, 24);
    const DemoColor green = {0.42, 0.53, 0.24, 1}, straw = {0.60, 0.58, 0.32, 1};
    DemoColor c = Blend(green, straw, DemoSmooth(0.52, 0.85, dry) * 0.7) * light * 1.22;
    c.a = 1;
    return c;
  });
}

std::unique_ptr<QBitMap> DemoPaintGravel()
{
  return DemoPaint(256, 256, [](double u, double v) {
    const double stones = DemoRandom(static_cast<int64_t>(u * 85), static_cast<int64_t>(v * 85), 31);
    const double shade =
        0.70 + 0.24 * (stones - 0.5) + 0.16 * Grain(u, v, 256, 32) + 0.18 * (Tiled(u, v, 5, 3, 33) - 0.5);
    return DemoColor(shade, shade * 0.91, shade * 0.72, 1);
  });
}

std::unique_ptr<QBitMap> DemoPaintKerb()
{
  // From the road outward, 4 m along: two red and two white stones.
  return DemoPaint(64, 256, [](double u, double v) {
    const bool red = static_cast<int>(v * 4) % 2 == 0;
    const double seam = std::abs(v * 4 - std::round(v * 4)) < 0.025 ? 0.75 : 1;
    const double wear = 1 - 0.22 * Tiled(u, v, 8, 3, 41) - 0.10 * Grain(u, v, 128, 42);
    const DemoColor paint = red ? DemoColor(0.78, 0.12, 0.10, 1) : DemoColor(0.93, 0.92, 0.88, 1);
    const double rubber = DemoSmooth(0.5, 0.0, u) * 0.35;
    DemoColor c = Blend(paint * wear * seam, {0.25, 0.25, 0.25, 1}, rubber * Tiled(u, v, 4, 2, 43) * 1.4);
    c.a = 1;
    return c;
  });
}

std::unique_ptr<QBitMap> DemoPaintConcrete()
{
  return DemoPaint(256, 256, [](double u, double v) {
    double shade = 0.72 + Grain(u, v, 256, 51) * 0.06 + (Tiled(u, v, 6, 4, 52) - 0.5) * 0.16;
    const double joint = std::min({u, 1 - u, v, 1 - v});
    shade -= 0.18 * DemoSmooth(0.012, 0.004, joint);
    return DemoColor(shade, shade * 0.985, shade * 0.95, 1);
  });
}

std::unique_ptr<QBitMap> DemoPaintWater()
{
  return DemoPaint(256, 256, [](double u, double v) {
    const double ripple = Tiled(u, v * 1.0, 14, 3, 61), broad = Tiled(u, v, 4, 2, 62);
    const double crest = DemoSmooth(0.62, 0.80, ripple);
    DemoColor c = Blend({0.16, 0.30, 0.38, 1}, {0.27, 0.43, 0.52, 1}, broad * 0.7 + ripple * 0.5);
    c = Blend(c, {0.62, 0.74, 0.82, 1}, crest * 0.55);
    c.a = 1;
    return c;
  });
}

std::unique_ptr<QBitMap> DemoPaintSky()
{
  // Once round in u; v from the horizon up to the zenith.
  return DemoPaint(512, 512, [](double u, double v) {
    const DemoColor zenith = {0.20, 0.42, 0.74, 1}, low = {0.66, 0.79, 0.90, 1}, haze = {0.84, 0.89, 0.92, 1};
    DemoColor c = Blend(low, zenith, std::pow(v, 0.62));
    c = Blend(c, haze, DemoSmooth(0.16, 0.0, v));
    // Clouds get flatter towards the horizon, as they would overhead.
    const double depth = 1 / (v + 0.16);
    const double shape = DemoFractal(u * 10, depth * 2.4, 5, 71, 10), thin = DemoFractal(u * 6, depth * 0.9, 3, 72, 6);
    const double cloud = DemoSmooth(0.52, 0.70, shape) * DemoSmooth(0.02, 0.14, v) * DemoSmooth(1.0, 0.55, v);
    const double shaded = DemoFractal(u * 10, depth * 2.4 + 0.12, 4, 71, 10);
    const double bright = 0.86 + 0.5 * std::clamp(shape - shaded + 0.12, 0.0, 0.28);
    c = Blend(c, {bright, bright, bright * 1.01, 1}, cloud * 0.88);
    c = Blend(c, {0.92, 0.94, 0.97, 1}, DemoSmooth(0.55, 0.9, thin) * 0.25 * DemoSmooth(1.0, 0.5, v));
    c.a = 1;
    return c;
  });
}

std::unique_ptr<QBitMap> DemoPaintArmco()
{
  // 4 m along, 1 m up: two rails and a post, nothing between them.
  return DemoPaint(256, 64, [](double u, double v) {
    const auto rail = [&](double from, double to) {
      const double t = (v - from) / (to - from);
      if (t < 0 || t > 1)
        return -1.0;
      return 0.62 + 0.22 * std::sin(t * 2 * DEMO_PI + 0.6) - 0.10 * DemoSmooth(0.85, 1.0, t);
    };
    const double shade = std::max(rail(0.18, 0.50), rail(0.58, 0.90));
    const double rust = DemoSmooth(0.6, 0.8, Tiled(u, v, 8, 3, 81)) * 0.4;
    if (shade > 0) {
      const double bolt = std::abs(u - 0.5) < 0.012 ? 0.82 : 1;
      return Blend(DemoColor(shade * bolt, shade * bolt, shade * bolt * 1.02, 1), {0.45, 0.33, 0.24, 1}, rust * 0.6);
    }
    if (std::abs(u - 0.5) < 0.02 && v < 0.9)
      return DemoColor(0.42, 0.42, 0.43, 1);
    return DemoColor(0.5, 0.5, 0.5, 0);
  });
}

std::unique_ptr<QBitMap> DemoPaintFence()
{
  // A square metre of wire net: diamonds.
  return DemoPaint(128, 128, [](double u, double v) {
    constexpr double MESHES = 8, WIRE = 0.13;
    const auto wire = [](double t) { return std::abs(t - std::floor(t) - 0.5) * 2; }; // 0 on the wire
    const double off = std::min(wire((u + v) * MESHES / 2), wire((u - v) * MESHES / 2));
    const double alpha = 1 - DemoSmooth(WIRE * 0.6, WIRE * 1.6, off);
    const double shade = 0.62 + 0.2 * (1 - off / WIRE) * alpha;
    return DemoColor(shade, shade, shade * 1.02, alpha);
  });
}

std::unique_ptr<QBitMap> DemoPaintPlain()
{
  return DemoPaint(64, 64, [](double u, double v) {
    return Grey(0.93 + 0.05 * Grain(u, v, 64, 91) + 0.06 * (Tiled(u, v, 4, 3, 92) - 0.5));
  });
}

std::span<const DemoPicture> DemoPictures()
{
  static constexpr DemoPicture pictures[] = {
      {"asphalt.tga", DemoPaintAsphalt}, {"pitlane.tga", DemoPaintPitLane}, {"grass.tga", DemoPaintGrass},
      {"gravel.tga", DemoPaintGravel},   {"kerb.tga", DemoPaintKerb},       {"concrete.tga", DemoPaintConcrete},
      {"water.tga", DemoPaintWater},     {"sky.tga", DemoPaintSky},         {"trees.tga", DemoPaintTrees},
      {"armco.tga", DemoPaintArmco},     {"crowd.tga", DemoPaintCrowd},     {"garages.tga", DemoPaintGarages},
      {"signs.tga", DemoPaintSigns},     {"plain.tga", DemoPaintPlain},     {"fence.tga", DemoPaintFence},
  };
  return pictures;
}

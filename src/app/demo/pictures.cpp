#include "app/demo/textures.h"

#include "foundation/qbitmap.h"

#include <array>

// The pictures with things in them: trees, people, doors, signs.

namespace {

// Five columns a sign, the lowest bit at the top of seven rows.
struct Glyph
{
  char code;
  std::array<uint8_t, 5> column;
};
constexpr Glyph glyphs[] = {
    {'0', {0x3E, 0x51, 0x49, 0x45, 0x3E}}, {'1', {0x00, 0x42, 0x7F, 0x40, 0x00}}, {'2', {0x42, 0x61, 0x51, 0x49, 0x46}},
    {'3', {0x21, 0x41, 0x45, 0x4B, 0x31}}, {'4', {0x18, 0x14, 0x12, 0x7F, 0x10}}, {'5', {0x27, 0x45, 0x45, 0x45, 0x39}},
    {'A', {0x7E, 0x11, 0x11, 0x11, 0x7E}}, {'B', {0x7F, 0x49, 0x49, 0x49, 0x36}}, {'D', {0x7F, 0x41, 0x41, 0x22, 0x1C}},
    {'E', {0x7F, 0x49, 0x49, 0x49, 0x41}}, {'I', {0x00, 0x41, 0x7F, 0x41, 0x00}}, {'K', {0x7F, 0x08, 0x14, 0x22, 0x41}},
    {'L', {0x7F, 0x40, 0x40, 0x40, 0x40}}, {'N', {0x7F, 0x04, 0x08, 0x10, 0x7F}}, {'O', {0x3E, 0x41, 0x41, 0x41, 0x3E}},
    {'P', {0x7F, 0x09, 0x09, 0x09, 0x06}}, {'R', {0x7F, 0x09, 0x19, 0x29, 0x46}}, {'S', {0x46, 0x49, 0x49, 0x49, 0x31}},
    {'T', {0x01, 0x01, 0x7F, 0x01, 0x01}}, {'V', {0x1F, 0x20, 0x40, 0x20, 0x1F}}, {'X', {0x63, 0x14, 0x08, 0x14, 0x63}},
    {'Y', {0x07, 0x08, 0x70, 0x08, 0x07}}, {'M', {0x7F, 0x02, 0x0C, 0x02, 0x7F}}, {'U', {0x3F, 0x40, 0x40, 0x40, 0x3F}},
    {'W', {0x3F, 0x40, 0x38, 0x40, 0x3F}}, {'F', {0x7F, 0x09, 0x09, 0x09, 0x01}}, {'G', {0x3E, 0x41, 0x49, 0x49, 0x7A}},
    {'H', {0x7F, 0x08, 0x08, 0x08, 0x7F}}, {'C', {0x3E, 0x41, 0x41, 0x41, 0x22}}, {'-', {0x08, 0x08, 0x08, 0x08, 0x08}},
};

const Glyph* FindGlyph(char c)
{
  for (const Glyph& g : glyphs)
    if (g.code == c)
      return &g;
  return nullptr;
}

// A crown of leaves: how much of the place is covered, and how light it is. u and v run over the tree's own square.
struct Leaves
{
  double cover, light;
};

Leaves Crown(double u, double v, double cx, double cy, double rx, double ry, uint32_t salt)
{
  const double dx = (u - cx) / rx, dy = (v - cy) / ry;
  const double r = std::sqrt(dx * dx + dy * dy);
  const double ragged = DemoFractal(u * 12, v * 12, 4, salt);
  const double holes = DemoFractal(u * 26, v * 26, 3, salt + 9);
  const double inside = 1.02 - r + (ragged - 0.5) * 0.75;
  const double cover = DemoSmooth(-0.02, 0.06, inside) * (holes > 0.36 || r < 0.45 ? 1 : 0);
  // Lit from the upper left; the clumps of leaves have a side of their own each.
  const double clump = DemoFractal(u * 14, v * 14, 3, salt + 5);
  const double light = 0.60 + 0.22 * (dy - dx * 0.6) + 0.85 * (clump - 0.5) +
                       0.20 * (DemoRandom(static_cast<int64_t>(u * 128), static_cast<int64_t>(v * 128), salt) - 0.5);
  return {cover, std::clamp(light, 0.25, 1.15)};
}

Leaves Spruce(double u, double v, uint32_t salt)
{
  const double top = 0.97, bottom = 0.07;
  if (v < bottom || v > top)
    return {0, 0};
  const double h = (top - v) / (top - bottom);
  // Rows of branches that hang at their ends.
  const double row = std::fmod(h * 9 + 0.6 * std::abs(u - 0.5), 1.0);
  const double wide = 0.40 * std::pow(h, 0.85) * (0.72 + 0.34 * row) + 0.012;
  const double ragged = (DemoFractal(u * 22, v * 22, 3, salt) - 0.5) * 0.13;
  const double cover = DemoSmooth(-0.006, 0.012, wide + ragged * std::sqrt(h) - std::abs(u - 0.5));
  const double light =
      0.50 + 0.30 * (1 - row) - 0.35 * (u - 0.5) + 0.5 * (DemoFractal(u * 24, v * 24, 3, salt + 3) - 0.5);
  return {cover, std::clamp(light, 0.2, 1.0)};
}

DemoColor Tree(int kind, double u, double v)
{
  static constexpr struct
  {
    double r, g, b;
  } leaf[] = {{0.36, 0.50, 0.17}, {0.50, 0.60, 0.24}, {0.20, 0.34, 0.19}, {0.42, 0.50, 0.20}};
  const auto salt = static_cast<uint32_t>(100 + kind * 17);
  Leaves l{};
  if (kind == 0)
    l = Crown(u, v, 0.5, 0.60, 0.44, 0.38, salt);
  else if (kind == 1)
    l = Crown(u, v, 0.5, 0.58, 0.29, 0.40, salt);
  else if (kind == 2)
    l = Spruce(u, v, salt);
  else
    l = Crown(u, v, 0.5, 0.34, 0.47, 0.36, salt);
  const auto& c = leaf[kind];
  DemoColor color(c.r * l.light, c.g * l.light, c.b * l.light, l.cover);
  const double trunk = (kind == 1 ? 0.016 : 0.026) * (1.3 - v);
  if (l.cover < 0.5 && kind != 3 && v < 0.5 && std::abs(u - 0.5 - 0.02 * std::sin(v * 9)) < trunk)
    color = kind == 1 ? DemoColor(0.72, 0.71, 0.66, 1) : DemoColor(0.33, 0.26, 0.20, 1);
  else if (l.cover < 0.5) // what shows through at a distance is the leaves' own colour, not a fringe of black
    color = {c.r * 0.55, c.g * 0.55, c.b * 0.55, 0};
  return color;
}

} // namespace

void DemoPaintText(QBitMap& picture, double u0, double v0, double u1, double v1, std::string_view text,
                   const DemoColor& color)
{
  const double columns = static_cast<double>(text.size()) * 6 - 1;
  DemoPaintOver(picture, u0, v0, u1, v1, [&](double u, double v) {
    const auto x = static_cast<int>((u - u0) / (u1 - u0) * columns);
    const auto y = static_cast<int>((v1 - v) / (v1 - v0) * 7);
    const Glyph* g = FindGlyph(text[std::min(static_cast<size_t>(x) / 6, text.size() - 1)]);
    const bool on = g && x % 6 < 5 && (g->column[static_cast<size_t>(x % 6)] >> y & 1);
    return DemoColor(color.r, color.g, color.b, on ? color.a : 0);
  });
}

std::unique_ptr<QBitMap> DemoPaintTrees()
{
  return DemoPaint(512, 512, [](double u, double v) {
    const double x = u * DEMO_TREE_BOARD, y = v * DEMO_TREE_BOARD;
    const int kind = static_cast<int>(y) * DEMO_TREE_BOARD + static_cast<int>(x);
    return Tree(kind, x - std::floor(x), y - std::floor(y));
  });
}

std::unique_ptr<QBitMap> DemoPaintCrowd()
{
  // 12 rows of seats with people on most of them.
  constexpr int rows = 12, seats = 44;
  return DemoPaint(512, 256, [](double u, double v) {
    const double row = v * rows, seat = u * seats;
    const int r = static_cast<int>(row), s = static_cast<int>(seat);
    const double x = seat - s - 0.5, y = row - r;
    const double stair = std::abs(std::fmod(u * 4, 1.0) - 0.5) > 0.47 ? 1 : 0;
    DemoColor c = y < 0.16 ? DemoColor(0.46, 0.46, 0.45, 1) : DemoColor(0.20, 0.27, 0.42, 1) * (0.75 + 0.3 * y);
    if (stair > 0)
      c = DemoColor(0.60, 0.59, 0.56, 1) * (y < 0.2 ? 0.8 : 1.0);
    else if (DemoRandom(s, r, 201) < 0.78) {
      static constexpr double shirts[][3] = {{0.85, 0.15, 0.12}, {0.92, 0.90, 0.86}, {0.95, 0.80, 0.15},
                                             {0.16, 0.32, 0.70}, {0.18, 0.18, 0.20}, {0.25, 0.55, 0.30},
                                             {0.90, 0.45, 0.10}, {0.55, 0.62, 0.70}};
      const auto& shirt = shirts[DemoHash(s, r, 202) % 8];
      const double sway = (DemoRandom(s, r, 203) - 0.5) * 0.2;
      if (y > 0.08 && y < 0.60 && std::abs(x - sway) < 0.34)
        c = DemoColor(shirt[0], shirt[1], shirt[2], 1) * (0.72 + 0.4 * y);
      else if (y >= 0.60 && std::hypot((x - sway) * 1.1, y - 0.76) < 0.20)
        c = DemoRandom(s, r, 204) < 0.3 ? DemoColor(shirt[2], shirt[0], shirt[1], 1) : DemoColor(0.80, 0.62, 0.50, 1);
    }
    c.a = 1;
    return c;
  });
}

std::unique_ptr<QBitMap> DemoPaintGarages()
{
  // Two boxes side by side: doors below, a sign band, windows with a balcony above.
  auto picture = DemoPaint(512, 256, [](double u, double v) {
    const double x = std::fmod(u * 2, 1.0);
    const double dirt = 0.96 + 0.06 * DemoFractal(u * 8, v * 8, 3, 211, 8);
    DemoColor c(0.82, 0.82, 0.80, 1);
    if (v < 0.46 && x > 0.09 && x < 0.91) {
      const double slat = 0.86 + 0.14 * (std::fmod(v * 40, 1.0) > 0.2);
      c = u < 0.5 ? DemoColor(0.10, 0.11, 0.13, 1) + DemoColor(0.10, 0.10, 0.09, 0) * DemoSmooth(0.4, 0.0, v)
                  : DemoColor(0.62, 0.65, 0.70, 1) * slat;
      if (u < 0.5 && v < 0.10)
        c = DemoColor(0.36, 0.35, 0.33, 1); // the floor inside
    } else if (v > 0.50 && v < 0.62) {
      c = u < 0.5 ? DemoColor(0.70, 0.12, 0.10, 1) : DemoColor(0.12, 0.25, 0.52, 1);
    } else if (v > 0.66 && v < 0.92) {
      const double pane = std::fmod(u * 12, 1.0);
      if (pane > 0.06 && pane < 0.94)
        c = DemoColor(0.24, 0.33, 0.42, 1) + DemoColor(0.25, 0.25, 0.22, 0) * DemoSmooth(0.66, 0.92, v);
    } else if (v > 0.95) {
      c = DemoColor(0.50, 0.50, 0.51, 1);
    }
    c *= dirt;
    c.a = 1;
    return c;
  });
  DemoPaintText(*picture, 0.10, 0.525, 0.40, 0.595, "TORVIK", {0.96, 0.95, 0.92, 1});
  DemoPaintText(*picture, 0.60, 0.525, 0.90, 0.595, "PADDOCK", {0.96, 0.95, 0.92, 1});
  return picture;
}

std::unique_ptr<QBitMap> DemoPaintSigns()
{
  auto picture = DemoPaint(512, 512, [](double, double) { return DemoColor(0.5, 0.5, 0.5, 1); });
  constexpr double cell = 1.0 / DEMO_SIGN_BOARD;
  const auto fill = [&](int sign, const DemoColor& back, const DemoColor& rim) {
    const double u0 = sign % DEMO_SIGN_BOARD * cell, v0 = sign / DEMO_SIGN_BOARD * cell;
    DemoPaintOver(*picture, u0, v0, u0 + cell, v0 + cell, [&](double u, double v) {
      const double edge = std::min({u - u0, u0 + cell - u, v - v0, v0 + cell - v}) / cell;
      return edge < 0.05 ? rim : back;
    });
  };
  const auto write = [&](int sign, std::string_view text, const DemoColor& color, double low = 0.3, double high = 0.7) {
    const double u0 = sign % DEMO_SIGN_BOARD * cell, v0 = sign / DEMO_SIGN_BOARD * cell;
    DemoPaintText(*picture, u0 + 0.12 * cell, v0 + low * cell, u0 + 0.88 * cell, v0 + high * cell, text, color);
  };
  const DemoColor white(0.95, 0.95, 0.93, 1), black(0.08, 0.08, 0.09, 1), red(0.80, 0.10, 0.08, 1);
  const char* distances[] = {"50", "100", "150", "200"};
  for (int i = 0; i < 4; ++i) {
    fill(DEMO_SIGN_50 + i, white, black);
    write(DEMO_SIGN_50 + i, distances[i], black, 0.22, 0.78);
  }
  fill(DEMO_SIGN_POST, {0.93, 0.48, 0.08, 1}, white);
  write(DEMO_SIGN_POST, "POST", white);
  fill(DEMO_SIGN_YELLOW, {0.99, 0.88, 0.05, 1}, {0.99, 0.88, 0.05, 1});
  fill(DEMO_SIGN_GREEN, {0.08, 0.72, 0.22, 1}, {0.08, 0.72, 0.22, 1});
  fill(DEMO_SIGN_RED, {0.90, 0.06, 0.06, 1}, {0.90, 0.06, 0.06, 1});
  const struct
  {
    const char* text;
    DemoColor back, ink;
  } adverts[] = {{"TORVIK", {0.12, 0.16, 0.42, 1}, white},
                 {"PAVEX", {0.93, 0.78, 0.10, 1}, black},
                 {"KLEFI", {0.10, 0.42, 0.26, 1}, white},
                 {"LAKESIDE", {0.88, 0.90, 0.92, 1}, red}};
  for (int i = 0; i < 4; ++i) {
    fill(DEMO_SIGN_ADVERT0 + i, adverts[i].back, adverts[i].ink);
    write(DEMO_SIGN_ADVERT0 + i, adverts[i].text, adverts[i].ink, 0.28, 0.72);
  }
  const double row = 3 * cell;
  DemoPaintOver(*picture, 0, row, cell, 1, [&](double u, double v) {
    return (static_cast<int>(u / cell * 8) + static_cast<int>((v - row) / cell * 8)) % 2 ? white : black;
  });
  fill(DEMO_SIGN_START, {0.10, 0.12, 0.16, 1}, red);
  write(DEMO_SIGN_START, "START", white, 0.34, 0.66);
  fill(DEMO_SIGN_GRID, white, white);
  fill(DEMO_SIGN_ARROW, red, white);
  DemoPaintOver(*picture, 3 * cell, row, 1, 1, [&](double u, double v) {
    const double x = std::fmod((u - 3 * cell) / cell * 3, 1.0), y = std::abs((v - row) / cell - 0.5);
    return DemoColor(0.95, 0.95, 0.93, x > y * 1.2 && x < y * 1.2 + 0.38 && y < 0.4 ? 1 : 0);
  });
  return picture;
}

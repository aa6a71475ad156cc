#pragma once

#include "app/demo/demomath.h"

#include <functional>
#include <memory>
#include <span>
#include <string_view>

class QBitMap;

// A picture and how its pixels come about. All are painted by formula: nothing is shipped, nothing is random.
struct DemoPicture
{
  const char* file;
  std::unique_ptr<QBitMap> (*paint)();
};
std::span<const DemoPicture> DemoPictures();

// A colour with alpha, 0 to 1.
using DemoColor = glm::dvec4;

// 32 bits a pixel; the formula gets u and v from 0 to 1, v upward.
std::unique_ptr<QBitMap> DemoPaint(int wid, int hgt, const std::function<DemoColor(double u, double v)>& formula);
// Over what is there, by the colour's alpha; u and v of the whole picture.
void DemoPaintOver(QBitMap& picture, double u0, double v0, double u1, double v1,
                   const std::function<DemoColor(double u, double v)>& formula);
// Capitals, digits and a few signs from a small raster, within the rectangle.
void DemoPaintText(QBitMap& picture, double u0, double v0, double u1, double v1, std::string_view text,
                   const DemoColor& color);

// The trees' picture is a board of 2 x 2, the signs' one of 4 x 4: numbers count from the bottom left, along the row.
constexpr int DEMO_TREE_BOARD = 2;
constexpr int DEMO_SIGN_BOARD = 4;
enum DemoSign
{
  DEMO_SIGN_50,
  DEMO_SIGN_100,
  DEMO_SIGN_150,
  DEMO_SIGN_200,
  DEMO_SIGN_POST, // a marshal post's face
  DEMO_SIGN_YELLOW,
  DEMO_SIGN_GREEN,
  DEMO_SIGN_RED,
  DEMO_SIGN_ADVERT0, // to 3
  DEMO_SIGN_CHEQUER = 12,
  DEMO_SIGN_START,
  DEMO_SIGN_GRID,
  DEMO_SIGN_ARROW,
};

std::unique_ptr<QBitMap> DemoPaintAsphalt();
std::unique_ptr<QBitMap> DemoPaintPitLane();
std::unique_ptr<QBitMap> DemoPaintGrass();
std::unique_ptr<QBitMap> DemoPaintGravel();
std::unique_ptr<QBitMap> DemoPaintKerb();
std::unique_ptr<QBitMap> DemoPaintConcrete();
std::unique_ptr<QBitMap> DemoPaintWater();
std::unique_ptr<QBitMap> DemoPaintSky();
std::unique_ptr<QBitMap> DemoPaintTrees();
std::unique_ptr<QBitMap> DemoPaintArmco();
std::unique_ptr<QBitMap> DemoPaintCrowd();
std::unique_ptr<QBitMap> DemoPaintGarages();
std::unique_ptr<QBitMap> DemoPaintSigns();
std::unique_ptr<QBitMap> DemoPaintPlain();
std::unique_ptr<QBitMap> DemoPaintFence();

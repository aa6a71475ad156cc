#pragma once

#include "app/demo/road.h"

#include <string>
#include <vector>

// A text file's name below the track's directory, and its content.
struct DemoFile
{
  std::string name;
  std::string content;
};

// Text of keys and brace-nested trees, indented by two.
class DemoIni
{
public:
  DemoIni& Open(std::string_view name);
  DemoIni& Close();
  DemoIni& Comment(std::string_view comment);
  DemoIni& Key(std::string_view key, std::string_view value);
  DemoIni& Key(std::string_view key, const char* value) { return Key(key, std::string_view(value)); }
  DemoIni& Key(std::string_view key, int value);
  DemoIni& Key(std::string_view key, double value);                  // six decimals
  DemoIni& Key(std::string_view key, const DVector3& value);         // three numbers in one key
  DemoIni& Coordinates(std::string_view key, const DVector3& value); // a tree of x, y and z
  DemoIni& Blank();
  std::string Take() { return std::move(text); }

private:
  std::string Indent() const { return std::string(static_cast<size_t>(level) * 2, ' '); }
  std::string text;
  int level = 0;
};
std::string DemoNumber(double value); // six decimals, with a point whatever the locale

// A marshal post: where it stands and which sections its flags are for.
struct DemoPost
{
  int section = 0, side = DEMO_LEFT, from = 0, to = 0;
};
std::vector<DemoPost> DemoPosts(const DemoCourse& course);

std::string DemoTrackIni(const DemoCourse& course);
std::string DemoSplineIni(const DemoCourse& course);
std::string DemoTrafficIni(const DemoCourse& course);
std::string DemoSpecialIni(const DemoCourse& course);
std::string DemoGeometryIni(const DemoScenery& scenery);
std::string DemoShaderFile();
// A second of a sound that can be repeated: 16 bits, one channel, 22,050 a second.
std::string DemoCrowdWave();
std::string DemoWaterWave();

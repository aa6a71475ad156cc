#include "app/demo/centreline.h"

#include "app/demo/demomath.h"

#include <array>
#include <charconv>

namespace {

constexpr size_t MIN_POINTS = 8;
constexpr size_t MAX_POINTS = 100000;
constexpr double MIN_LENGTH = 300, MAX_LENGTH = 30000;
constexpr double MIN_WIDTH = 1, MAX_WIDTH = 50;
constexpr double MAX_COORDINATE = 100000;

double Distance(const DemoPoint& a, const DemoPoint& b)
{
  return std::hypot(b.x - a.x, b.z - a.z);
}

DemoPoint Between(const DemoPoint& a, const DemoPoint& b, double t)
{
  return {DemoMix(a.x, b.x, t), DemoMix(a.z, b.z, t), DemoMix(a.right, b.right, t), DemoMix(a.left, b.left, t)};
}

std::string_view Trimmed(std::string_view s)
{
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t'))
    s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r'))
    s.remove_suffix(1);
  return s;
}

// Exactly four finite numbers with commas between them.
bool ParseRow(std::string_view row, std::array<double, 4>& out)
{
  for (size_t i = 0; i < out.size(); ++i) {
    const size_t comma = row.find(',');
    if ((comma == std::string_view::npos) != (i == 3))
      return false;
    const std::string_view cell = Trimmed(row.substr(0, comma));
    const auto [end, error] = std::from_chars(cell.data(), cell.data() + cell.size(), out[i]);
    if (error != std::errc() || end != cell.data() + cell.size() || !std::isfinite(out[i]))
      return false;
    row.remove_prefix(comma == std::string_view::npos ? row.size() : comma + 1);
  }
  return true;
}

std::string AtLine(int number, const char* text)
{
  return "line " + std::to_string(number) + ": " + text;
}

} // namespace

DemoLine DemoLakesideLine()
{
  // Control points of a uniform cubic B-spline. Three equal steps in a row make a straight.
  struct Control
  {
    double x, z, half;
  };
  static constexpr Control controls[] = {
      {0, 40, 6.5},     {0, -60, 6.5},    {0, -160, 6.5},   {0, -260, 6.5},   {0, -350, 6.5},   {14, -428, 6.5},
      {70, -480, 6.3},  {150, -492, 6.0}, {215, -462, 6.0}, {275, -452, 6.0}, {330, -490, 6.0}, {400, -528, 6.0},
      {478, -505, 6.0}, {530, -430, 6.0}, {548, -340, 6.0}, {548, -255, 6.0}, {560, -170, 6.0}, {612, -105, 6.0},
      {690, -62, 6.0},  {752, 0, 6.0},    {760, 85, 6.0},   {700, 145, 6.2},  {615, 138, 6.0},  {545, 165, 6.0},
      {512, 240, 6.0},  {515, 330, 6.0},  {490, 415, 6.0},  {412, 462, 6.0},  {322, 455, 6.0},  {255, 405, 6.0},
      {190, 372, 6.0},  {128, 398, 6.0},  {62, 405, 6.2},   {14, 350, 6.4},   {0, 250, 6.5},    {0, 140, 6.5},
  };
  constexpr int count = static_cast<int>(std::size(controls));
  constexpr int pieces = 24;
  DemoLine line;
  for (int i = 0; i < count; ++i)
    for (int k = 0; k < pieces; ++k) {
      const double t = static_cast<double>(k) / pieces;
      const double w[] = {(1 - t) * (1 - t) * (1 - t) / 6, (3 * t * t * t - 6 * t * t + 4) / 6,
                          (-3 * t * t * t + 3 * t * t + 3 * t + 1) / 6, t * t * t / 6};
      DemoPoint p;
      for (int j = 0; j < 4; ++j) {
        const Control& c = controls[(i + j) % count];
        p.x += w[j] * c.x;
        p.z += w[j] * c.z;
        p.right += w[j] * c.half;
      }
      p.left = p.right;
      line.push_back(p);
    }
  // The start lies where the straight passes the origin.
  size_t start = 0;
  for (size_t i = 0; i < line.size(); ++i)
    if (std::hypot(line[i].x, line[i].z) < std::hypot(line[start].x, line[start].z))
      start = i;
  std::rotate(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(start), line.end());
  line.front().x = line.front().z = 0;
  return line;
}

bool DemoParseLine(std::string_view text, DemoLine& line, std::string& problem)
{
  DemoLine read;
  int number = 0;
  while (!text.empty()) {
    const size_t end = text.find('\n');
    const std::string_view row = Trimmed(text.substr(0, text.find('#') < end ? text.find('#') : end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    ++number;
    if (row.empty())
      continue;
    std::array<double, 4> v{};
    if (!ParseRow(row, v))
      return problem = AtLine(number, "not four numbers with commas between them"), false;
    if (std::abs(v[0]) > MAX_COORDINATE || std::abs(v[1]) > MAX_COORDINATE)
      return problem = AtLine(number, "farther than 100 km from the origin"), false;
    if (std::min(v[2], v[3]) < MIN_WIDTH || std::max(v[2], v[3]) > MAX_WIDTH)
      return problem = AtLine(number, "a width outside 1..50 m"), false;
    if (read.size() == MAX_POINTS)
      return problem = AtLine(number, "too many points"), false;
    const DemoPoint p{v[0], -v[1], v[2], v[3]}; // north is -z
    if (read.empty() || Distance(read.back(), p) > 0.01)
      read.push_back(p);
  }
  while (read.size() > 1 && Distance(read.back(), read.front()) <= 0.01)
    read.pop_back();
  if (read.size() < MIN_POINTS)
    return problem = "fewer than 8 points", false;
  const double length = DemoLength(read);
  if (length < MIN_LENGTH || length > MAX_LENGTH)
    return problem = "the length is outside 300 m .. 30 km", false;
  line = std::move(read);
  return true;
}

DemoLine DemoResample(const DemoLine& line, double spacing)
{
  const double length = DemoLength(line);
  const int count = std::max(8, static_cast<int>(std::lround(length / spacing)));
  DemoLine out;
  size_t i = 0;
  double start = 0; // distance of point i
  for (int k = 0; k < count; ++k) {
    const double wanted = length * k / count;
    double span = Distance(line[i], line[(i + 1) % line.size()]);
    while (start + span < wanted && i + 1 < line.size()) {
      start += span;
      ++i;
      span = Distance(line[i], line[(i + 1) % line.size()]);
    }
    out.push_back(Between(line[i], line[(i + 1) % line.size()], std::clamp((wanted - start) / span, 0.0, 1.0)));
  }
  // A binomial pass takes the kinks out of a surveyed line; it moves a point of a bend of 10 m radius by 0.3 m.
  const DemoLine before = out;
  const size_t n = before.size();
  for (size_t k = 1; k < n; ++k)
    out[k] = Between(before[k], Between(before[k - 1], before[(k + 1) % n], 0.5), 0.5);
  return out;
}

double DemoLength(const DemoLine& line)
{
  double length = 0;
  for (size_t i = 0; i < line.size(); ++i)
    length += Distance(line[i], line[(i + 1) % line.size()]);
  return length;
}

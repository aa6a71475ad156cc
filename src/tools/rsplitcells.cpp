#include "tools/rsplitcells.h"

#include "geometry/dgeob.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace {

// Cells side by side on one axis.
class Axis
{
public:
  Axis(float boxMin, float boxMax, float size) : min(boxMin), cellSize(size)
  {
    const float wanted = (boxMax - boxMin) / cellSize + 1;
    count = wanted >= 1 ? static_cast<int>(std::min(wanted, MOST)) : 0; // none for a NaN
  }
  // Calls found for each cell that holds the place. The division is not exact, the comparisons decide.
  template <typename Found>
  void ForCellsAt(float place, Found found) const
  {
    const float guess = (place - min) / cellSize;
    if (!(guess > -REACH && guess < static_cast<float>(count) + REACH))
      return;
    const int middle = static_cast<int>(std::floor(guess));
    for (int c = std::max(middle - REACH, 0); c <= std::min(middle + REACH, count - 1); ++c) {
      const float first = static_cast<float>(c) * cellSize + min;
      if (first <= place && place < first + cellSize)
        found(static_cast<uint32_t>(c));
    }
  }

private:
  static constexpr float MOST = 1 << 20; // cells; a box of NaN or 10^30 metres is no track
  static constexpr int REACH = 2;
  float min;
  float cellSize;
  int count;
};

} // namespace

std::vector<RSplitTriangle> RSplitIntoCells(std::span<const DGeob* const> geobs, const DBox& box, float cellSize,
                                            bool join)
{
  const Axis x(box.min.x, box.max.x, cellSize);
  const Axis z(box.min.z, box.max.z, cellSize);
  std::vector<RSplitTriangle> all;
  for (size_t g = 0; g < geobs.size(); ++g) {
    const DGeob& geob = *geobs[g];
    for (size_t i = 0; i + 2 < geob.index.size(); i += 3) {
      const uint16_t* corner = &geob.index[i];
      if (std::max({corner[0], corner[1], corner[2]}) >= geob.vertex.size())
        continue;
      RSplitTriangle t{0, 0, static_cast<uint32_t>(g), static_cast<uint32_t>(i)};
      if (join) {
        all.push_back(t);
        continue;
      }
      const DVector3 centre = (geob.vertex[corner[0]] + geob.vertex[corner[1]] + geob.vertex[corner[2]]) / 3.0f;
      x.ForCellsAt(centre.x, [&](uint32_t column) {
        z.ForCellsAt(centre.z, [&](uint32_t row) {
          t.column = column;
          t.row = row;
          all.push_back(t);
        });
      });
    }
  }
  std::stable_sort(all.begin(), all.end(), [](const RSplitTriangle& a, const RSplitTriangle& b) {
    return std::tie(a.column, a.row) < std::tie(b.column, b.row);
  });
  return all;
}

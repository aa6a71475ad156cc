#include "geometry/dhermite.h"

#include <algorithm>
#include <cmath>

void DNonUniformHermiteSpline::SetClosed(bool isClosed)
{
  closed = isClosed;
  tangentsValid = false;
}

void DNonUniformHermiteSpline::Clear()
{
  keys.clear();
  largest = 0;
  tangentsValid = false;
}

void DNonUniformHermiteSpline::AddKey(float parameter, float value)
{
  keys.push_back({value, parameter});
  largest = keys.size() == 1 ? parameter : std::max(largest, parameter);
  tangentsValid = false;
}

DNonUniformHermiteSpline::Key DNonUniformHermiteSpline::Neighbour(int i, int offset) const
{
  const int last = Count() - 1;
  int j = i + offset;
  if (!closed || last < 1)
    return keys[static_cast<size_t>(std::clamp(j, 0, last))];
  float shift = 0;
  for (; j < 0; j += last)
    shift -= largest;
  for (; j > last; j -= last)
    shift += largest;
  Key key = keys[static_cast<size_t>(j)];
  key.parameter += shift;
  return key;
}

void DNonUniformHermiteSpline::CalculateTangents() const
{
  tangentsValid = true;
  const auto slope = [](const Key& from, const Key& to) {
    const float span = to.parameter - from.parameter;
    return span == 0 ? 0.0f : (to.value - from.value) / span;
  };
  const int count = Count();
  for (int i = 0; i < count; ++i) {
    const Key before = Neighbour(i, -1);
    const Key here = keys[static_cast<size_t>(i)];
    const Key next = Neighbour(i, 1);
    const Key second = Neighbour(i, 2);
    const float a = slope(before, here);
    const float b = slope(here, next);
    const float c = slope(next, second);
    const float span = next.parameter - here.parameter;
    keys[static_cast<size_t>(i)].tangentOut = (a + b) / 2 * span;
    if (i + 1 < count)
      keys[static_cast<size_t>(i + 1)].tangentIn = (b + c) / 2 * span;
  }
  if (closed && count > 1)
    keys.front().tangentIn = keys.back().tangentIn; // one point
}

float DNonUniformHermiteSpline::GetValue(float parameter, float* firstDerivative, float* secondDerivative) const
{
  if (keys.empty()) {
    if (firstDerivative)
      *firstDerivative = 0;
    if (secondDerivative)
      *secondDerivative = 0;
    return 0;
  }
  if (!tangentsValid)
    CalculateTangents();
  const auto above =
      std::upper_bound(keys.begin(), keys.end(), parameter, [](float p, const Key& key) { return p < key.parameter; });
  const size_t i = above == keys.begin() ? 0 : static_cast<size_t>(above - keys.begin()) - 1;
  return Evaluate(i, parameter, firstDerivative, secondDerivative);
}

float DNonUniformHermiteSpline::GetValueIn(int segment, float parameter, float* firstDerivative) const
{
  if (segment >= 0 && segment < Count()) {
    if (!tangentsValid)
      CalculateTangents();
    return Evaluate(static_cast<size_t>(segment), parameter, firstDerivative, nullptr);
  }
  if (firstDerivative)
    *firstDerivative = 0;
  return 0;
}

float DNonUniformHermiteSpline::Evaluate(size_t i, float parameter, float* firstDerivative,
                                         float* secondDerivative) const
{
  const bool isLast = i + 1 == keys.size();
  const Key& from = keys[i];
  const Key& to = !isLast ? keys[i + 1] : closed ? keys.front() : from;
  float span = 1;
  if (!isLast)
    span = keys[i + 1].parameter - from.parameter;
  else if (i > 0)
    span = from.parameter - keys[i - 1].parameter;
  const float beyond = std::max(0.0f, parameter - from.parameter);
  const float s = span == 0 ? 0.0f : beyond / span;
  const float s2 = s * s;
  const float s3 = s2 * s;
  if (firstDerivative)
    *firstDerivative = (6 * s2 - 6 * s) * from.value + (3 * s2 - 4 * s + 1) * from.tangentOut +
                       (3 * s2 - 2 * s) * to.tangentIn + (6 * s - 6 * s2) * to.value;
  if (secondDerivative)
    *secondDerivative = (12 * s - 6) * from.value + (6 * s - 4) * from.tangentOut + (6 * s - 2) * to.tangentIn +
                        (6 - 12 * s) * to.value;
  return (2 * s3 - 3 * s2 + 1) * from.value + (s3 - 2 * s2 + s) * from.tangentOut + (s3 - s2) * to.tangentIn +
         (3 * s2 - 2 * s3) * to.value;
}

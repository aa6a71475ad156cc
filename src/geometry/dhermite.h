#pragma once

#include <cstddef>
#include <vector>

// A curve of one float over a parameter whose keys lie at uneven distances.
class DNonUniformHermiteSpline
{
public:
  explicit DNonUniformHermiteSpline(bool isClosed = true) : closed(isClosed) {}
  void SetClosed(bool isClosed);
  bool IsClosed() const { return closed; }
  void Clear();
  // Parameters are to grow from key to key.
  void AddKey(float parameter, float value);
  int Count() const { return static_cast<int>(keys.size()); }
  float Value(int i) const { return keys[static_cast<std::size_t>(i)].value; }
  float Parameter(int i) const { return keys[static_cast<std::size_t>(i)].parameter; }
  float LargestParameter() const { return largest; }
  // 0 without keys. The derivatives are by the position in the segment, 0 to 1.
  float GetValue(float parameter, float* firstDerivative = nullptr, float* secondDerivative = nullptr) const;

  // The same by the piece from key segment on, also beyond its end. 0 when there is no such key.
  float GetValueIn(int segment, float parameter, float* firstDerivative = nullptr) const;

private:
  struct Key
  {
    float value;
    float parameter;
    float tangentIn = 0;
    float tangentOut = 0;
  };
  // The key that many behind i; round the end of a closed curve, whose last key and key 0 are one point.
  Key Neighbour(int i, int offset) const;
  void CalculateTangents() const;
  float Evaluate(std::size_t i, float parameter, float* firstDerivative, float* secondDerivative) const;

  bool closed;
  float largest = 0;
  mutable bool tangentsValid = false;
  mutable std::vector<Key> keys;
};

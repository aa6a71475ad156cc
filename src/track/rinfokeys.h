#pragma once

#include "foundation/qinfo.h"
#include "geometry/dvector.h"

#include <string>

// How vectors stand in the track's files.

// "<key>.x", ".y", ".z".
inline DVector3 GetVectorKeys(const QInfo& info, const std::string& key)
{
  return {info.GetFloat(key + ".x"), info.GetFloat(key + ".y"), info.GetFloat(key + ".z")};
}

inline void SetVectorKeys(QInfo& info, const std::string& key, const DVector3& v)
{
  info.SetFloat(key + ".x", v.x);
  info.SetFloat(key + ".y", v.y);
  info.SetFloat(key + ".z", v.z);
}

// "x y z" in one key.
inline DVector3 GetVector(const QInfo& info, const std::string& key, const DVector3& otherwise = DVector3(0.0f))
{
  DVector3 v(0.0f);
  info.GetFloats(key, 3, &v.x, &otherwise.x);
  return v;
}

inline DVector4 GetVector4(const QInfo& info, const std::string& key, const DVector4& otherwise = DVector4(0.0f))
{
  DVector4 v(0.0f);
  info.GetFloats(key, 4, &v.x, &otherwise.x);
  return v;
}

inline void SetVector(QInfo& info, const std::string& key, const DVector3& v)
{
  info.SetFloats(key, &v.x, 3);
}

// A number of records out of a file: never negative.
inline int GetCount(const QInfo& info, const std::string& key)
{
  const int count = info.GetInt(key);
  return count < 0 ? 0 : count;
}

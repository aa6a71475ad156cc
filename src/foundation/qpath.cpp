#include "foundation/qpath.h"

#include "foundation/qfilename.h"
#include "foundation/qreport.h"

bool QPath::Add(const std::string& directory)
{
  if (directories.Add(directory))
    return true;
  QWARN("QPath:Add(); maximum (%d) reached", MAX_PATH);
  return false;
}

const char* QPath::GetPath(int index) const
{
  if (const std::string* directory = directories.At(index))
    return directory->c_str();
  QWARN("QPath:GetPath(%d) out of range", index);
  return "";
}

const char* QPath::Resolve(const char* name) const
{
  static std::string result;
  qstring full;
  Find(name, full);
  result = full.Str();
  return result.c_str();
}

bool QPath::Find(const char* name, qstring& full, qstring* directory) const
{
  const std::string wanted = name ? name : "";
  for (const std::string& d : directories) {
    const std::string candidate = d + "/" + wanted;
    if (!QFileExists(candidate))
      continue;
    full = qstring(candidate);
    if (directory)
      *directory = qstring(d);
    return true;
  }
  full = qstring(wanted);
  if (directory)
    directory->Empty();
  return false;
}

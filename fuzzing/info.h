#pragma once

#include "foundation/qinfoiterator.h"
#include "foundation/qinfotree.h"
#include "fuzzing/check.h"

#include <map>
#include <vector>

// All nodes below the root, parents first, in file order.
inline std::vector<const QInfoNode*> FuzzNodes(const QInfo& info)
{
  std::vector<const QInfoNode*> nodes;
  std::vector<const QInfoNode*> pending = {info.Root()->FirstChild()};
  while (!pending.empty()) {
    const QInfoNode* node = pending.back();
    pending.pop_back();
    if (!node)
      continue;
    nodes.push_back(node);
    pending.push_back(node->Next());
    pending.push_back(node->FirstChild());
  }
  return nodes;
}

// A key with a value in the file is found by its full path, and the first of equal paths wins.
inline void FuzzInfoLookups(const QInfo& info)
{
  std::map<std::string, const QInfoNode*> first;
  for (const QInfoNode* node : FuzzNodes(info))
    if (node->flags & QInfoNode::INDEXED)
      first.emplace(QInfoFullPath(node), node);
  for (const auto& [path, node] : first) {
    std::string value;
    FUZZ_CHECK(info.GetString(path, value));
    FUZZ_CHECK(value == node->Value());
  }
}

inline void FuzzInfoChanges(QInfo& info, std::string_view path)
{
  if (info.SetString(path, "fuzz 1,2") && !info.FindNode(path)->IsRemoved())
    FUZZ_CHECK(info.PathExists(path));
  float numbers[3];
  info.GetFloats(path, 3, numbers);
  info.GetInt(path);
  info.CountChildren(path);
  if (info.RemoveKey(path))
    FUZZ_CHECK(info.FindNode(path)->IsRemoved());
}

// The first line is a path to look up, set and remove; the rest is the file.
inline void FuzzInfo(std::string_view input)
{
  const QuietReports quiet;
  const std::string_view path = input.substr(0, input.find('\n'));
  QInfo info("fuzz.ini", QInfo::NO_READ);
  info.ReadFromText(input.substr(path.size()));
  FuzzInfoLookups(info);
  size_t count = 0;
  QInfoIterator it(info);
  qstring name;
  while (it.GetNextAny(name, true))
    FUZZ_CHECK(++count <= input.size()); // an iterator ends
  const std::string text = info.WriteToText();
  QInfo again("fuzz.ini", QInfo::NO_READ);
  again.ReadFromText(text);
  FuzzInfoLookups(again);
  FuzzInfoChanges(info, path);
  if (count < 20) { // it only formats, slowly
    info.DbgPrint("fuzz", true);
    info.DbgPrint("fuzz");
  }
  info.WriteToText();
  info.MarkWritten(); // nothing reaches the disk
}

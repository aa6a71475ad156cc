#include "geometry/dof.h"

#include "foundation/qfile.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"
#include "geometry/dgeode.h"
#include "geometry/dreadfile.h"

#include <algorithm>
#include <cstdio>
#include <sys/stat.h>

// The file as a whole: DOF1, which holds the materials in MATS and the geometry in GEOB and ends in EDOF.

std::string_view DofReader::GetId()
{
  if (Left() < 4) {
    End();
    return {"\0\0\0\0", 4};
  }
  at += 4;
  return {reinterpret_cast<const char*>(bytes.data()) + at - 4, 4};
}

std::string DofReader::GetString()
{
  const auto length = static_cast<int16_t>(Get<uint16_t>());
  std::string text(std::min(Left(), static_cast<size_t>(std::max<int16_t>(length, 0))), '\0');
  GetArray(text.data(), text.size());
  if (length > 0 && text.size() < static_cast<size_t>(length))
    End();
  return text;
}

void DofReader::SkipTo(size_t position)
{
  at = std::max(at, std::min(position, bytes.size()));
}

bool DofReader::Afford(size_t objectSize)
{
  constexpr size_t FREE = 65536;
  constexpr size_t TIMES = 8;
  if (spent + objectSize > FREE + TIMES * bytes.size())
    return false;
  spent += objectSize;
  return true;
}

void DofWriter::PutString(std::string_view text)
{
  text = text.substr(0, 32767); // the length is signed
  PutU16(static_cast<uint16_t>(text.size()));
  PutText(text);
}

bool DGeode::ImportDOF(const std::string& path)
{
  DArray<std::byte> content;
  if (!DReadFile(path, content))
    return false;
  DofReader in(content, path);
  return ImportChunks(in);
}

bool DGeode::ImportDOF(std::span<const std::byte> bytes)
{
  DofReader in(bytes, name);
  return ImportChunks(in);
}

bool DGeode::ImportChunks(DofReader& in)
{
  Clear();
  if (in.GetId() != "DOF1")
    return false;
  in.GetU32();
  for (std::string_view id = in.GetId(); id != "EDOF" && !in.Ended(); id = in.GetId()) {
    const size_t end = DofChunkEnd(in);
    if (in.Ended())
      break;
    if (id == "MATS") {
      ImportMaterials(in);
      in.SkipTo(end);
    } else if (id == "GEOB") {
      if (!ImportGeobs(in))
        return false;
    } else if (id == std::string_view("\0\0\0\0", 4)) {
      QWARN("Empty chunk id in geode '%s'; probably an old ZModeler buggy export; use dof_fix to correct.\n",
            name.c_str());
      break;
    } else {
      QWARN("Skipping unknown geode chunk '%.4s' of length 0x%x (in %s)\n", id.data(),
            static_cast<unsigned>(end - in.Position()), in.fileName.c_str());
      in.SkipTo(end);
    }
  }
  for (const auto& g : geob)
    if (g->normal.empty())
      g->RethinkNormals();
  if (NeedsTangents())
    for (const auto& g : geob)
      g->CalculateTangentArray();
  return true;
}

void DGeode::ImportMaterials(DofReader& in)
{
  const uint32_t count = in.GetCount();
  if (count > MAX_MATERIALS)
    QWARN("Geode contains %u materials but max=%d", count, MAX_MATERIALS);
  for (uint32_t i = 0; i < count && i < MAX_MATERIALS && in.HasMore(); ++i) {
    if (!in.Afford(sizeof(DMaterial))) {
      QWARN("Geode %s has more materials than its size can hold", name.c_str());
      return;
    }
    DMaterial* m = AddMaterial();
    if (!m)
      return; // a second MATS chunk
    m->ImportDOF(in, this);
  }
}

bool DGeode::ImportGeobs(DofReader& in)
{
  uint32_t count = in.GetCount();
  if (count > MAX_GEOBS) {
    QWARN("Geode contains %u geobs but max=%d", count, MAX_GEOBS);
    count = MAX_GEOBS;
  }
  if (count < 1)
    QWARN("Geode %s does not contain any geobs (no geometry)", name.c_str());
  for (uint32_t i = 0; i < count && in.HasMore(); ++i) {
    if (!in.Afford(sizeof(DGeob))) {
      QWARN("Geode %s has more geobs than its size can hold", name.c_str());
      return true;
    }
    DGeob* g = AddGeob();
    if (!g)
      return true; // a second GEOB chunk
    if (!g->ImportDOF(in)) {
      geob.pop_back();
      return false;
    }
  }
  return true;
}

DArray<std::byte> DGeode::ExportDOFBytes() const
{
  DofWriter out;
  size_t size = 4096 + material.size() * 256;
  for (const auto& g : geob)
    size += 4096 + g->index.size() * 2 + g->vertex.size() * (12 * 4 + 8 * 2);
  out.Reserve(size);
  {
    const DofChunk whole(out, "DOF1");
    {
      const DofChunk chunk(out, "MATS");
      out.PutU32(static_cast<uint32_t>(material.size()));
      for (const auto& m : material)
        m->ExportDOF(out);
    }
    {
      const DofChunk chunk(out, "GEOB");
      out.PutU32(static_cast<uint32_t>(geob.size()));
      for (const auto& g : geob)
        g->ExportDOF(out);
    }
    out.PutText("EDOF");
  }
  return out.TakeBytes();
}

bool DGeode::ExportDOF(const std::string& path) const
{
  if (QWriteFile(path, std::span<const std::byte>(ExportDOFBytes())))
    return true;
  QERR("DGeode:ExportDOF(%s); can't write file", path.c_str());
  return false;
}

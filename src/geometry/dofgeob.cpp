#include "foundation/qreport.h"
#include "geometry/dgeode.h"
#include "geometry/dof.h"

#include <algorithm>

// GOB1 chunks of a model file: one piece of geometry.

namespace {

// The count at the head of an array, cut to what the file can still hold.
size_t ArrayCount(DofReader& in, size_t elementSize, const char* geode, bool* cut = nullptr)
{
  const size_t count = in.GetCount();
  const size_t there = in.Left() / elementSize;
  if (count > there)
    QWARN("DGeob:ImportDOF(%s); %zu entries, but %zu bytes are left", geode, count, in.Left());
  if (cut)
    *cut = count > there;
  return std::min(count, there);
}

// As many elements as there are vertices, whatever the array holds.
template <typename T>
void PutParallel(DofWriter& out, const char* id, const DArray<T>& array, size_t vertices)
{
  const DofChunk chunk(out, id);
  out.PutU32(static_cast<uint32_t>(vertices));
  const size_t there = std::min(array.size(), vertices);
  out.PutBytes(std::as_bytes(std::span(array.data(), there)));
  out.PutZeroes((vertices - there) * sizeof(T));
}

} // namespace

bool DGeob::ImportDOF(DofReader& in)
{
  Destroy();
  flags = 0;
  const bool former = in.GetId() == "GOB0";
  in.GetU32();
  if (former)
    return false;
  for (std::string_view id = in.GetId(); id != "GEND" && !in.Ended(); id = in.GetId()) {
    const size_t end = DofChunkEnd(in);
    if (in.Ended())
      break;
    if (id == "GHDR") {
      in.GetU32(); // flags are of a run, not of a file
      paintFlags = in.GetU32();
      materialRef = in.GetS32();
    } else if (id == "INDI") {
      ImportIndices(in);
    } else if (id == "VERT") {
      ImportVertices(in);
    } else if (id == "OVRT") {
      ImportBaseVertices(in);
    } else if (id == "NORM") {
      ImportParallel(in, normal, "normals");
    } else if (id == "VCOL") {
      ImportParallel(in, vertexColor, "vertex colors");
    } else if (id == "TVER" || id == "TVR1") {
      ImportTexCoords(in, id == "TVER" ? 0 : 1);
    } else if (id == "BRST") {
      ImportBursts(in);
    } else {
      QWARN("Skipping unknown geob chunk '%.4s' of length 0x%x (geode %s)\n", id.data(),
            static_cast<unsigned>(end - in.Position()), GeodeName());
    }
    in.SkipTo(end);
  }
  FinalizeGeob();
  return true;
}

void DGeob::ImportIndices(DofReader& in)
{
  const size_t count = ArrayCount(in, sizeof(uint16_t), GeodeName());
  if (count == 0)
    QWARN("Geode %s has empty index geob; better to remove it.", GeodeName());
  index.resize(count);
  in.GetArray(index.data(), count);
}

void DGeob::ImportVertices(DofReader& in)
{
  const size_t count = ArrayCount(in, sizeof(DVector3), GeodeName());
  if (count == 0)
    QWARN("Geode %s has empty vertex (VERT) chunk; better to remove it.", GeodeName());
  vertex.resize(count);
  in.GetArray(vertex.data(), count);
}

void DGeob::ImportBaseVertices(DofReader& in)
{
  bool cut = false;
  const size_t count = ArrayCount(in, sizeof(DVector3), GeodeName(), &cut);
  if (cut) {
    in.End(); // half an array would take good vertices away
    return;
  }
  baseVertex.resize(count);
  in.GetArray(baseVertex.data(), count);
  if (count > 0 && count < vertex.size())
    vertex.resize(count);
}

// The file may bring fewer than there are vertices, and more: those are kept.
void DGeob::ImportParallel(DofReader& in, DArray<DVector3>& array, const char* what)
{
  const size_t count = ArrayCount(in, sizeof(DVector3), GeodeName());
  if (count == 0)
    return;
  if (count < vertex.size()) {
    QWARN("Geode %s doesn't have enough %s (%d, need %d)", GeodeName(), what, static_cast<int>(count), VertexCount());
    if (!array.empty())
      return; // one array is filled up, not each that a file repeats
  }
  array.resize(std::max(count, vertex.size()));
  in.GetArray(array.data(), count);
  std::fill(array.begin() + static_cast<ptrdiff_t>(count), array.end(), DVector3(0.0f));
}

void DGeob::ImportTexCoords(DofReader& in, int channel)
{
  const int32_t count = in.GetS32();
  if (count != VertexCount())
    QWARN("Geode %s contains a TVER chunks with tvertices=%d, while vertices=%d; unexpected and corrected to be equal",
          GeodeName(), count, VertexCount());
  if (vertex.empty())
    return;
  auto& array = texCoord[static_cast<size_t>(channel)];
  array.resize(vertex.size());
  const size_t there = in.GetArray(array.data(), array.size());
  std::fill(array.begin() + static_cast<ptrdiff_t>(there), array.end(), DVector2(0.0f));
}

void DGeob::ImportBursts(DofReader& in)
{
  bool cut = false;
  const size_t count = ArrayCount(in, 4 * sizeof(int32_t), GeodeName(), &cut);
  if (cut) {
    in.End(); // the four arrays lie one behind the other: without the last there's no burst
    return;
  }
  const size_t kept = std::min<size_t>(count, MAX_BURSTS);
  if (count > kept)
    QWARN("DGeob:ImportDOF(%s); %zu bursts but max=%d", GeodeName(), count, MAX_BURSTS);
  burst.assign(kept, DBurst());
  for (int32_t DBurst::*field : {&DBurst::start, &DBurst::count, &DBurst::mtlID, &DBurst::vperP}) {
    const size_t next = in.Position() + count * sizeof(int32_t); // one array behind the other
    for (DBurst& b : burst)
      b.*field = in.GetS32();
    in.SkipTo(next);
  }
}

void DGeob::ExportDOF(DofWriter& out) const
{
  const DofChunk whole(out, "GOB1");
  {
    const DofChunk chunk(out, "GHDR");
    // What holds for this run alone means nothing to the next one.
    out.PutU32(flags & ~static_cast<uint32_t>(TRANSPARENT_PASS | IN_VBO | ADJACENCY | BOX_VALID));
    out.PutU32(paintFlags);
    out.PutS32(materialRef);
  }
  PutParallel(out, "INDI", index, index.size());
  PutParallel(out, "VERT", vertex, vertex.size());
  if (!texCoord[0].empty())
    PutParallel(out, "TVER", texCoord[0], vertex.size());
  if (!texCoord[1].empty())
    PutParallel(out, "TVR1", texCoord[1], vertex.size());
  if (!normal.empty())
    PutParallel(out, "NORM", normal, vertex.size());
  if (!vertexColor.empty())
    PutParallel(out, "VCOL", vertexColor, vertex.size());
  {
    const DofChunk chunk(out, "BRST");
    const size_t count = std::min<size_t>(burst.size(), MAX_BURSTS);
    out.PutU32(static_cast<uint32_t>(count));
    for (const int32_t DBurst::*field : {&DBurst::start, &DBurst::count, &DBurst::mtlID, &DBurst::vperP})
      for (size_t i = 0; i < count; ++i)
        out.PutS32(burst[i].*field);
  }
  if (!baseVertex.empty())
    PutParallel(out, "OVRT", baseVertex, vertex.size());
  out.PutText("GEND");
}

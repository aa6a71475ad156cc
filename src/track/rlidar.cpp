#include "track/rlidar.h"

#include "foundation/qfile.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"
#include "geometry/daabbtreehd.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <emmintrin.h>
#include <limits>

namespace {

static_assert(std::endian::native == std::endian::little && sizeof(DVector3) == 12, "points are read as they stand");

constexpr int64_t HEAD_SIZE = 20; // up to the points
constexpr int64_t TAG_SIZE = 4;
constexpr int64_t RECORD_SIZE = 12; // of a point, and of a triangle
// What is taken at a time: small enough to be in the cache when it is gone through, and whole groups of four.
constexpr size_t PIECE = 16384;
constexpr int MAX_REPORTS = 20;

int ToMegabytes(int64_t bytes)
{
  return static_cast<int>(bytes >> 20);
}

void SwapOne(DVector3& p)
{
  p = {p.x, p.z, -p.y};
}

// Four points are three registers: x0 y0 z0 x1, y1 z1 x2 y2, z2 x3 y3 z3.
void SwapFour(float* at)
{
  const __m128 sign0 = _mm_set_ps(0, -0.0f, 0, 0);
  const __m128 sign1 = _mm_set_ps(0, 0, -0.0f, 0);
  const __m128 sign2 = _mm_set_ps(-0.0f, 0, 0, -0.0f);
  const __m128 a = _mm_loadu_ps(at);
  const __m128 b = _mm_loadu_ps(at + 4);
  const __m128 c = _mm_loadu_ps(at + 8);
  const __m128 x2z2 = _mm_shuffle_ps(b, c, _MM_SHUFFLE(0, 0, 3, 2)); // x2 y2 z2 z2
  const __m128 y2x3 = _mm_shuffle_ps(b, c, _MM_SHUFFLE(1, 1, 3, 3)); // y2 y2 x3 x3
  _mm_storeu_ps(at, _mm_xor_ps(_mm_shuffle_ps(a, a, _MM_SHUFFLE(3, 1, 2, 0)), sign0));
  _mm_storeu_ps(at + 4, _mm_xor_ps(_mm_shuffle_ps(b, x2z2, _MM_SHUFFLE(2, 0, 0, 1)), sign1));
  _mm_storeu_ps(at + 8, _mm_xor_ps(_mm_shuffle_ps(y2x3, c, _MM_SHUFFLE(2, 3, 2, 0)), sign2));
}

void SwapPoints(std::span<DVector3> points)
{
  size_t i = 0;
  for (; i + 4 <= points.size(); i += 4)
    SwapFour(&points[i].x);
  for (; i < points.size(); ++i)
    SwapOne(points[i]);
}

// A coordinate that is no number is passed over.
void Extend(DBox& box, std::span<const DVector3> points)
{
  for (const DVector3& p : points) {
    box.min = {std::min(box.min.x, p.x), std::min(box.min.y, p.y), std::min(box.min.z, p.z)};
    box.max = {std::max(box.max.x, p.x), std::max(box.max.y, p.y), std::max(box.max.z, p.z)};
  }
}

// True when all are below the limit, compared without sign; a limit of at least 1.
bool AllBelow(std::span<const uint32_t> numbers, uint32_t limit)
{
  const __m128i flip = _mm_set1_epi32(std::numeric_limits<int>::min());
  const __m128i last = _mm_xor_si128(_mm_set1_epi32(static_cast<int>(limit - 1)), flip);
  __m128i above = _mm_setzero_si128();
  size_t i = 0;
  for (; i + 4 <= numbers.size(); i += 4) {
    const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&numbers[i]));
    above = _mm_or_si128(above, _mm_cmpgt_epi32(_mm_xor_si128(four, flip), last));
  }
  bool good = _mm_movemask_epi8(above) == 0;
  for (; i < numbers.size(); ++i)
    good = good && numbers[i] < limit;
  return good;
}

void Append(std::vector<std::byte>& out, const void* from, size_t size)
{
  const auto* bytes = static_cast<const std::byte*>(from);
  out.insert(out.end(), bytes, bytes + size);
}

void AppendInt(std::vector<std::byte>& out, int value)
{
  Append(out, &value, sizeof value);
}

} // namespace

RLidar::RLidar(std::string trackDirectory) : trackDir(std::move(trackDirectory))
{}

RLidar::~RLidar()
{
  ReleaseBuffers();
}

std::string RLidar::FullPath(const std::string& file) const
{
  return file.find('/') != std::string::npos ? file : trackDir + "/xyz/" + file;
}

void RLidar::Clear()
{
  ReleaseBuffers();
  tree.reset();
  treeCollected = false;
  points = {};
  triangles = {};
  blocks.clear();
  bounds = {};
  oneBlock = false;
}

bool RLidar::AllocPoints(int count)
{
  QLOG("RLidar:AllocPoints(%d) => %d Mb\n", count, ToMegabytes(count * RECORD_SIZE));
  tree.reset(); // it looks at what goes
  ReleaseBuffers();
  points.clear();
  points.resize(static_cast<size_t>(std::max(count, 0)));
  return true;
}

bool RLidar::AllocTriangles(int count)
{
  QLOG("RLidar:AllocTriangles(%d) => %d Mb\n", count, ToMegabytes(count * RECORD_SIZE));
  tree.reset();
  triangles.clear();
  triangles.resize(static_cast<size_t>(std::max(count, 0)) * 3);
  return true;
}

bool RLidar::LoadRLD(const std::string& file, unsigned readFlags)
{
  Clear();
  const std::string path = FullPath(file);
  QLOG("Loading RLD file (%s)...\n", path.c_str());
  QFile stream(path);
  if (!stream.IsOpen()) {
    QWARN("RLidar:RelocateRLD() failed to load RLD file (%s)", path.c_str());
    return false;
  }
  if (!ReadRLD(stream, file.c_str(), readFlags))
    return false;
  QLOG("RLD load successful.\n");
  return true;
}

bool RLidar::ReadRLD(QFile& stream, const char* name, unsigned readFlags)
{
  Clear();
  const bool good = Read(stream, readFlags, name);
  if (!good)
    Clear();
  return good;
}

bool RLidar::Read(QFile& file, unsigned readFlags, const char* name)
{
  int counts[2] = {};
  file.Seek(2 * TAG_SIZE);
  file.Read(counts, sizeof counts);
  file.Seek(HEAD_SIZE);
  const int64_t size = file.Size();
  const int64_t expected = HEAD_SIZE + TAG_SIZE + (int64_t{counts[0]} + counts[1]) * RECORD_SIZE;
  if (size < HEAD_SIZE + TAG_SIZE || counts[0] < 0 || counts[1] < 0 || size < expected) {
    QWARN("RLidar:LoadRLD(%s); %d points and %d triangles don't fit into %lld bytes", name, counts[0], counts[1],
          static_cast<long long>(size));
    return false;
  }
  QLOG("Reading %d points...\n", counts[0]);
  if (!AllocPoints(counts[0]))
    return false;
  ReadPoints(file, readFlags);
  file.Seek(HEAD_SIZE + TAG_SIZE + counts[0] * RECORD_SIZE);
  QLOG("Reading %d triangles...\n", counts[1]);
  if (counts[0] == 0) // and so none that a triangle could name
    file.Seek(expected);
  else if (AllocTriangles(counts[1]))
    ReadTriangles(file, name);
  return ReadBlocks(file);
}

void RLidar::ReadPoints(QFile& file, unsigned readFlags)
{
  constexpr float FAR = 1e8f;
  DBox box{DVector3(FAR), DVector3(-FAR)};
  for (size_t done = 0; done < points.size(); done += PIECE) {
    const std::span piece(points.data() + done, std::min(PIECE, points.size() - done));
    const size_t got = file.Read(piece.data(), piece.size_bytes());
    if (got < piece.size_bytes()) // the file shrank meanwhile
      std::memset(reinterpret_cast<char*>(piece.data()) + got, 0, piece.size_bytes() - got);
    if (readFlags & GET_BOUNDS)
      Extend(box, piece);
    if (readFlags & SWAP_AXES)
      SwapPoints(piece);
  }
  if ((readFlags & GET_BOUNDS) && !points.empty())
    bounds = box;
}

void RLidar::ReadTriangles(QFile& file, const char* name)
{
  int reported = 0;
  constexpr size_t STEP = PIECE * 3;
  for (size_t done = 0; done < triangles.size(); done += STEP) {
    const std::span piece(triangles.data() + done, std::min(STEP, triangles.size() - done));
    const size_t got = file.Read(piece.data(), piece.size_bytes());
    if (got < piece.size_bytes())
      std::memset(reinterpret_cast<char*>(piece.data()) + got, 0, piece.size_bytes() - got);
    if (!AllBelow(piece, static_cast<uint32_t>(points.size())))
      CheckTriangles(done, done + piece.size(), name, reported);
  }
  if (reported > MAX_REPORTS)
    QERR("RLD '%s': %d more indices are out of range", name, reported - MAX_REPORTS);
}

void RLidar::CheckTriangles(size_t first, size_t end, const char* name, int& reported)
{
  for (size_t i = first; i < end; ++i) {
    if (triangles[i] < points.size())
      continue;
    if (reported++ < MAX_REPORTS)
      qlog(QLOG_FATAL, "RLidar::LoadRLD",
           "RLD '%s' contains indices out of range 0..%d (points); triangle %d index %d contains %d\n", name,
           PointCount(), static_cast<int>(i / 3), static_cast<int>(i % 3), static_cast<int>(triangles[i]));
    triangles[i] = 0;
  }
}

bool RLidar::ReadBlocks(QFile& file)
{
  char tag[TAG_SIZE];
  int count = 0;
  if (file.Read(tag, sizeof tag) < sizeof tag || file.Read(&count, sizeof count) < sizeof count) {
    oneBlock = true;
    blocks.push_back({});
    return true;
  }
  const int64_t start = file.Tell();
  if (count < 0 || count > (file.Size() - start) / (2 * int64_t{sizeof(int)})) {
    QWARN("RLidar:LoadRLD(); %d blocks don't fit into the file", count);
    return false;
  }
  blocks.resize(static_cast<size_t>(std::min(count, MAX_BLOCKS)));
  for (Block& block : blocks)
    file.Read(&block.start, sizeof block.start);
  file.Seek(start + count * int64_t{sizeof(int)});
  for (Block& block : blocks)
    file.Read(&block.size, sizeof block.size);
  return true;
}

bool RLidar::SaveRLD(const std::string& file) const
{
  QLOG("RLidar:SaveRLD(%s)\n", file.c_str());
  std::vector<std::byte> out;
  out.reserve((points.size() + triangles.size() / 3) * RECORD_SIZE + blocks.size() * sizeof(Block) + 64);
  Append(out, "RLD0HEAD", 8);
  AppendInt(out, PointCount());
  AppendInt(out, TriangleCount());
  Append(out, "VERT", TAG_SIZE);
  Append(out, points.data(), points.size() * sizeof(DVector3));
  Append(out, "TRIS", TAG_SIZE);
  Append(out, triangles.data(), triangles.size() * sizeof(uint32_t));
  Append(out, "BLKI", TAG_SIZE);
  AppendInt(out, static_cast<int>(blocks.size()));
  for (const Block& block : blocks)
    AppendInt(out, block.start);
  for (const Block& block : blocks)
    AppendInt(out, block.size);
  const std::string path = FullPath(file);
  if (!QWriteFile(path, out)) {
    QWARN("RLidar:SaveRLD(%s) failed to open file", path.c_str());
    return false;
  }
  QLOG("Save complete.\n");
  return true;
}

void RLidar::SwapAxes()
{
  SwapPoints({points.data(), points.size()});
  ReleaseBuffers();
}

void RLidar::Translate(const DVector3& by)
{
  for (DVector3& p : points)
    p += by;
  ReleaseBuffers();
  if (tree)
    BuildTree(); // its boxes would stay where the points were
}

void RLidar::BuildTree()
{
  treeCollected = false;
  tree = std::make_unique<DAabbTreeHd>(std::span<const DVector3>(points), std::span<const uint32_t>(triangles));
  tree->Build();
}

void RLidar::FlipTriangles()
{
  QLOG("RLidar:FlipTriangles\n");
  for (size_t i = 0; i < triangles.size(); i += 3)
    std::swap(triangles[i], triangles[i + 2]);
}

void RLidar::DbgPrint(const char* label) const
{
  QLOG("RLidar [%s]\n", label);
  for (size_t i = 0; i < std::min<size_t>(points.size(), 3); ++i)
    QLOG("Point %d: %f, %f, %f\n", static_cast<int>(i), double(points[i].x), double(points[i].y), double(points[i].z));
}

std::string RLidar::GetPaintFlagsString() const
{
  constexpr struct
  {
    uint32_t flag;
    const char* word;
  } words[] = {{PAINT_VERTICES, "PaintVertices"}, {PAINT_TRIANGLES, "PaintTriangles"}, {PAINT_AABB, "PaintAABB"}};
  std::string text;
  for (const auto& w : words)
    if (flags & w.flag)
      text += (text.empty() ? "" : ", ") + std::string(w.word);
  return text.empty() ? "<none>" : text;
}

#include "tools/rtracksplitter.h"

#include "foundation/qfilename.h"
#include "foundation/qinfo.h"
#include "foundation/qlog.h"
#include "foundation/qreport.h"
#include "foundation/qsafewrite.h"
#include "geometry/dgeode.h"
#include "geometry/dgeodeoptimize.h"
#include "geometry/dshader.h"
#include "geometry/dtexture.h"
#include "tools/qtoolui.h"
#include "track/rtrackvrml.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <unordered_set>

// A geob with its node's flags.
struct RTrackSplitter::Piece
{
  DGeob* geob;
  uint32_t flags;
  size_t node;
};

struct RTrackSplitter::Material
{
  DMaterial* material;
  std::vector<Piece> pieces; // whose material has its name
};

struct RTrackSplitter::Corner
{
  const DGeob* geob;
  uint16_t vertex;
};

namespace {

constexpr size_t FILES_A_FLUSH = 500;
constexpr uint32_t STORED_FLAGS = RTrackNode::SKY | RTrackNode::COLLIDE | RTrackNode::SURFACE;

// "a/b/house.dof" gives "house".
std::string BareName(const std::string& file)
{
  const std::string base = QFileBase(file.c_str());
  return base.substr(0, base.rfind('.'));
}

// Copies an array's entries to the corners, or what stands for them. It stays empty when no corner has one, unless it
// always is to be there.
template <typename Entry, typename Corners, typename Source>
void Fill(DArray<Entry>& to, const Corners& corners, Source source, const Entry& otherwise, bool always)
{
  const auto has = [&](const auto& c) { return source(*c.geob).size() > c.vertex; };
  if (!always && std::none_of(corners.begin(), corners.end(), has))
    return;
  to.resize(corners.size());
  for (size_t i = 0; i < corners.size(); ++i)
    to[i] = has(corners[i]) ? source(*corners[i].geob)[corners[i].vertex] : otherwise;
}

// What goes into the models for a material: the geobs show the first submaterial where there is one.
DMaterial& ShownMaterial(DMaterial& m)
{
  return m.sub.empty() ? m : *m.sub.front();
}

// A model whose material belongs to somebody else.
class BorrowingGeode
{
public:
  BorrowingGeode(const std::string& name, DMaterial& m) : geode(name) { geode.material.emplace_back(&m); }
  ~BorrowingGeode() { static_cast<void>(geode.material.front().release()); }
  BorrowingGeode(const BorrowingGeode&) = delete;
  BorrowingGeode& operator=(const BorrowingGeode&) = delete;
  DGeode geode;
};

} // namespace

RTrackSplitter::RTrackSplitter(RTrackVRML& splitTrack, QToolUi& toolUi) :
    track(splitTrack), ui(toolUi), directory(OutputDirectory(splitTrack))
{}

RTrackSplitter::~RTrackSplitter() = default;

std::string RTrackSplitter::OutputDirectory(const RTrackVRML& track)
{
  return "data/tracks/" + track.trackName + "_split";
}

bool RTrackSplitter::Split()
{
  // The log of problems starts anew, so that the user is shown those of the split. On the command line all of them are
  // on the console.
  const bool logs = !QReports().logDirectory.empty() && QLogOpenLast();
  const std::string iniPath = directory + "/geometry.ini";
  std::error_code ignored;
  std::filesystem::remove(iniPath, ignored);
  geometryIni = std::make_unique<QInfo>(iniPath, QInfo::NO_READ);
  files = std::make_unique<QFileBatch>(directory);
  FindMaterials();
  QDBG("Found %d materials\n", static_cast<int>(materials.size()));
  GatherPieces();
  const bool finished = SplitMaterials();
  CloneUnsplittableGeodes();
  CommitModels();
  if (!geometryIni->Write(nullptr, false))
    unwritten.push_back(iniPath);
  geometryIni.reset();
  if (logs && QLogHasProblems())
    ui.ShowFile(QLogLastPath());
  return finished;
}

bool RTrackSplitter::SplitMaterials()
{
  const auto progress = ui.OpenProgress("Splitting...", "Splitting DOF files by material and location.");
  for (size_t i = 0; i < materials.size(); ++i) {
    progress->SetText(materials[i].material->name);
    progress->SetProgress(static_cast<int>(i) + 1, static_cast<int>(materials.size()));
    progress->Flush();
    SplitByMaterial(materials[i]);
    if (!progress->Poll())
      return false;
  }
  return true;
}

void RTrackSplitter::FindMaterials()
{
  std::unordered_set<std::string> known;
  for (const auto& node : track.nodes) {
    const DGeode* geode = node->Geode();
    for (size_t i = 0; geode && i < geode->material.size(); ++i) {
      DMaterial& m = *geode->material[i];
      if (known.contains(m.name))
        continue;
      if (materials.size() >= MAX_MATERIAL) {
        QWARN("RTrackSplitter:FindMaterials(); more than %d materials; the rest is left out",
              static_cast<int>(MAX_MATERIAL));
        return;
      }
      known.insert(m.name);
      materials.push_back({&m, {}});
      if (m.texture.empty() && m.shader && (m.shader->layer.empty() || !m.shader->layer.front().texture))
        QERR("Shader '%s' has no layer0 texture", m.shader->name.c_str());
    }
  }
}

bool RTrackSplitter::IsUnsplittable(const RTrackNode& node) const
{
  const DGeode* geode = node.Geode();
  return geode && std::find(track.lights.begin(), track.lights.end(), BareName(geode->name)) != track.lights.end();
}

void RTrackSplitter::GatherPieces()
{
  std::unordered_map<std::string_view, Material*> byName;
  for (Material& m : materials)
    byName[m.material->name] = &m;
  size_t number = 0;
  for (const auto& node : track.nodes) {
    ++number;
    const DGeode* geode = node->Geode();
    if (!geode || IsUnsplittable(*node))
      continue;
    for (const auto& geob : geode->geob) {
      const DMaterial* shown = geob->GetMaterial(0);
      const auto found = shown ? byName.find(shown->name) : byName.end();
      if (found != byName.end())
        found->second->pieces.push_back({geob.get(), node->flags, number});
    }
  }
}

void RTrackSplitter::SplitByMaterial(Material& m)
{
  if (!(cellSize >= SMALLEST_CELL))
    cellSize = SMALLEST_CELL;
  QDBG("SplitByMaterial(%d) (%s)\n", static_cast<int>(&m - materials.data()), m.material->name.c_str());
  std::vector<uint32_t> passes;
  size_t skipped = 0; // the node that brought one flag word too many
  for (const Piece& p : m.pieces) {
    if (p.node == skipped || std::find(passes.begin(), passes.end(), p.flags) != passes.end())
      continue;
    if (passes.size() < MAX_PASS) {
      passes.push_back(p.flags);
      continue;
    }
    QERR("More unique geometry flags found than is possible (MAX_PASS=%d)", static_cast<int>(MAX_PASS));
    skipped = p.node;
  }
  QDBG("Unique flags found: %d\n", static_cast<int>(passes.size()));
  for (size_t pass = 0; pass < passes.size(); ++pass)
    SplitPass(m, passes[pass], pass);
}

void RTrackSplitter::SplitPass(Material& m, uint32_t flags, size_t pass)
{
  std::vector<Piece> pieces;
  std::copy_if(m.pieces.begin(), m.pieces.end(), std::back_inserter(pieces),
               [flags](const Piece& p) { return p.flags == flags; });
  std::vector<const DGeob*> geobs;
  DBox box = pieces.front().geob->GetBoundingBox();
  for (const Piece& p : pieces) {
    geobs.push_back(p.geob);
    box.Merge(p.geob->GetBoundingBox());
  }
  const DShader* shader = m.material->shader;
  const bool join = shader && shader->IsSky();
  if (join)
    QDBG("This material (%s) has a shader (%s) which is sky - don't split but join", m.material->name.c_str(),
         shader->name.c_str());
  const std::vector<RSplitTriangle> all = RSplitIntoCells(geobs, box, cellSize, join);
  for (size_t first = 0, end = 0; first < all.size(); first = end) {
    while (end < all.size() && all[end].column == all[first].column && all[end].row == all[first].row)
      ++end;
    MakeCell(m, std::span(all).subspan(first, end - first), pieces, pass);
  }
}

void RTrackSplitter::MakeCell(Material& m, std::span<const RSplitTriangle> cell, std::span<const Piece> pieces,
                              size_t pass)
{
  const std::string suffix = "_cell_" + std::to_string(cell.front().column) + "_" + std::to_string(cell.front().row) +
                             "_pass" + std::to_string(pass);
  const std::vector<Corner> corners = CornersOf(cell, pieces);
  const auto parts = static_cast<int>((corners.size() + MAX_PART - 1) / MAX_PART);
  QDBG("MakeGeode(%s) with %d vertices (%d geodes)\n", suffix.c_str(), static_cast<int>(corners.size()), parts);
  const std::string& name = m.material->name;
  for (int part = 0; part < parts; ++part) {
    const size_t first = static_cast<size_t>(part) * MAX_PART;
    const std::string ending = suffix + "_" + static_cast<char>('a' + part);
    MakeGeode(m, ending, std::span(corners).subspan(first, std::min(MAX_PART, corners.size() - first)));
    const std::string key = "objects." + name + ending + "_p" + std::to_string(pass);
    geometryIni->SetString(key + ".file", name + "_" + ending + ".dof");
    geometryIni->SetInt(key + ".flags", static_cast<int>(pieces.front().flags & STORED_FLAGS));
  }
  QDBG("%d geodes created.\n", parts);
}

std::vector<RTrackSplitter::Corner> RTrackSplitter::CornersOf(std::span<const RSplitTriangle> cell,
                                                              std::span<const Piece> pieces) const
{
  std::vector<Corner> corners;
  corners.reserve(std::min(3 * cell.size(), MAX_VERTEX));
  for (const RSplitTriangle& t : cell)
    for (size_t k = 0; k < 3; ++k) {
      const DGeob* geob = pieces[t.geob].geob;
      const Corner corner{geob, geob->index[t.corner + k]};
      if (corners.size() < MAX_VERTEX)
        corners.push_back(corner);
      else
        corners.back() = corner;
    }
  if (3 * cell.size() > MAX_VERTEX)
    QWARN("RTrackSplitter:SplitGeob(); out of vertices (max=%d)", static_cast<int>(MAX_VERTEX));
  return corners;
}

void RTrackSplitter::MakeGeode(Material& m, const std::string& ending, std::span<const Corner> corners)
{
  DMaterial& material = ShownMaterial(*m.material);
  const std::string name = m.material->name + ending;
  QDBG("Geode '%s' with %d vertices\n", name.c_str(), static_cast<int>(corners.size()));
  BorrowingGeode borrowing(name, material);
  DGeode& geode = borrowing.geode;
  DGeob& geob = *geode.AddGeob();
  geob.index.resize(corners.size());
  for (size_t j = 0; j < corners.size(); ++j)
    geob.index[j] = static_cast<uint16_t>(j);
  const DVector3 up(0, 1, 0);
  Fill(
      geob.vertex, corners, [](const DGeob& g) -> auto& { return g.vertex; }, DVector3(0.0f), true);
  Fill(
      geob.normal, corners, [](const DGeob& g) -> auto& { return g.normal; }, up, true);
  Fill(
      geob.vertexColor, corners, [](const DGeob& g) -> auto& { return g.vertexColor; }, up, false);
  for (size_t c = 0; c < geob.texCoord.size(); ++c)
    Fill(
        geob.texCoord[c], corners, [c](const DGeob& g) -> auto& { return g.texCoord[c]; }, DVector2(0.0f), c == 0);
  geob.AddBurst({0, 3 * geob.IndexCount(), 0, 3});
  if (material.texture.empty())
    material.texture.push_back(std::make_unique<DBitMapTexture>(geode.FindMapFile("stub.tga")));
  DGeodeOptimize(geode);
  WriteModel(geode, m.material->name + "_" + ending + ".dof");
}

// Without a message: the directory is the user's business, and there may be thousands.
void RTrackSplitter::WriteModel(const DGeode& geode, const std::string& leaf)
{
  if (!files->Add(leaf, geode.ExportDOFBytes()))
    unwritten.push_back(directory + "/" + leaf);
  if (files->Pending() >= FILES_A_FLUSH)
    CommitModels();
}

void RTrackSplitter::CommitModels()
{
  for (std::string& path : files->Commit())
    unwritten.push_back(std::move(path));
}

void RTrackSplitter::CloneUnsplittableGeodes()
{
  QDBG("RTrackSplitter:CloneUnsplittableGeodes()");
  for (const auto& node : track.nodes) {
    if (!IsUnsplittable(*node))
      continue;
    const std::string name = BareName(node->Geode()->name);
    QDBG("Clone %s\n", name.c_str());
    geometryIni->SetString("objects." + name + ".file", name + ".dof");
    geometryIni->SetInt("objects." + name + ".flags", static_cast<int>(node->flags));
    WriteModel(*node->Geode(), name + ".dof");
  }
}

#include "track/ropenarchive.h"

#include "foundation/qappcore.h"
#include "foundation/qfilename.h"
#include "foundation/qreport.h"

ROpenArchive::ROpenArchive(const std::string& path)
{
  if (!QAppCore::Get() || !QFileExists(path, false))
    return;
  auto opened = std::make_unique<QArchive>(path);
  if (opened->IsOpen() && QAppCore::Get()->GetArchives().AddArchive(opened.get()))
    archive = std::move(opened);
}

ROpenArchive::~ROpenArchive()
{
  if (archive && QAppCore::Get())
    QAppCore::Get()->GetArchives().RemoveArchive(archive.get());
}

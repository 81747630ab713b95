#include "import/SNImportCatalog.h"

#include "import/SNGnomeStickyReader.h"
#include "import/SNImportReader.h"
#include "import/SNIndicatorStickynotesReader.h"
#include "import/SNKNotesReader.h"
#include "import/SNMintStickyReader.h"
#include "import/SNTomboyReader.h"
#include "import/SNXpadReader.h"

std::vector<std::unique_ptr<SNImportReader>> SNImportCatalog::allReaders()
{
    std::vector<std::unique_ptr<SNImportReader>> readers;
    // In the order the import window lists the programs.
    readers.push_back(std::make_unique<SNXpadReader>());
    readers.push_back(std::make_unique<SNKNotesReader>());
    readers.push_back(std::make_unique<SNMintStickyReader>());
    readers.push_back(std::make_unique<SNGnomeStickyReader>());
    readers.push_back(std::make_unique<SNIndicatorStickynotesReader>());
    readers.push_back(std::make_unique<SNTomboyReader>(SNTomboyReader::Program::Tomboy));
    readers.push_back(std::make_unique<SNTomboyReader>(SNTomboyReader::Program::Gnote));
    readers.push_back(std::make_unique<SNTomboyReader>(SNTomboyReader::Program::TomboyNg));
    return readers;
}

std::unique_ptr<SNImportReader> SNImportCatalog::readerWithId(const QString &programId)
{
    for (std::unique_ptr<SNImportReader> &reader : allReaders()) {
        if (reader->programId().compare(programId, Qt::CaseInsensitive) == 0)
            return std::move(reader);
    }
    return nullptr;
}

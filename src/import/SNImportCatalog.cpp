#include "import/SNImportCatalog.h"

#include "import/SNImportReader.h"
#include "import/SNKNotesReader.h"
#include "import/SNTomboyReader.h"

std::vector<std::unique_ptr<SNImportReader>> SNImportCatalog::allReaders()
{
    std::vector<std::unique_ptr<SNImportReader>> readers;
    // Each reader adds itself here, in the order the import window lists the programs.
    readers.push_back(std::make_unique<SNKNotesReader>());
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

#pragma once

#include <QString>

#include <memory>
#include <vector>

class SNImportReader;

// Every notes program Vellumo can import from, one reader each, in the order the import window
// lists them.
class SNImportCatalog final
{
public:
    SNImportCatalog() = delete;

    static std::vector<std::unique_ptr<SNImportReader>> allReaders();
    // The reader of the program the command line names; null for an unknown name.
    static std::unique_ptr<SNImportReader> readerWithId(const QString &programId);
};

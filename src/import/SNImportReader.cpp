#include "import/SNImportReader.h"

SNImportReader::~SNImportReader() = default;

#pragma once

#include "import/SNImportFinder.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace Ui {
class SNImportPanel;
}

// The list of notes programs whose notes were found, each with a box to tick and how many notes
// it has, an Import button, and the report of what an import did. It shows what it is handed
// and says when the user asks to import: the search and the import are its owner's business.
class SNImportPanel final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SNImportPanel)

public:
    // How many of a source's notes came in before.
    using ImportedBefore = std::function<qsizetype(const SNImportSource &source)>;

    explicit SNImportPanel(QWidget *parent = nullptr);
    ~SNImportPanel() override;

    // While the programs' folders are read.
    void showSearching();
    // Lists the sources, each ticked when it has notes that did not come in before.
    void showSources(const QList<SNImportSource> &sources, const ImportedBefore &importedBefore);
    // The sources ticked now, in the order listed.
    QList<SNImportSource> tickedSources() const;
    // After an import: the report, and the list made again for what is left.
    void showReport(const QString &report);

    const QList<SNImportSource> &sources() const { return m_sources; }
    bool hasSources() const { return !m_sources.isEmpty(); }

Q_SIGNALS:
    void importRequested();

private:
    void updateImportButton();

    std::unique_ptr<Ui::SNImportPanel> m_ui;
    QList<SNImportSource> m_sources;
};

#include "preferences/QWAboutViewController.h"

#include "settings/SNApplicationInfo.h"
#include "ui_QWAboutViewController.h"

#include <QIcon>

namespace {

const QString applicationIconResource = QStringLiteral(":/Vellumo/icons/org.vellumo.Vellumo.svg");
constexpr int iconSize = 80;

} // namespace

QList<QWAboutViewController::Credit> QWAboutViewController::credits()
{
    return {
        { QStringLiteral("Qt 6"), tr("windows, text and drawing"), QStringLiteral("LGPL-3.0") },
        { QStringLiteral("enchant-2"), tr("spell checking"), QStringLiteral("LGPL-2.1") },
        { QStringLiteral("Hunspell dictionaries"), tr("the words spell checking knows"),
            tr("per dictionary") },
        { QStringLiteral("libcanberra"), tr("event sounds"), QStringLiteral("LGPL-2.1") },
        { QStringLiteral("libxcb"), tr("system-wide shortcuts and window states"),
            QStringLiteral("MIT") },
    };
}

QWAboutViewController::QWAboutViewController(QObject *parent) : QWModuleViewController(parent) { }

QWAboutViewController::~QWAboutViewController() = default;

QString QWAboutViewController::moduleTitle() const
{
    return tr("About");
}

QString QWAboutViewController::moduleWindowTitle() const
{
    return tr("About %1").arg(SNApplicationInfo::applicationName());
}

QString QWAboutViewController::nameText() const
{
    return SNApplicationInfo::applicationName();
}

QString QWAboutViewController::versionText() const
{
    return tr("Version %1").arg(SNApplicationInfo::applicationVersion());
}

QString QWAboutViewController::creditsText() const
{
    return m_ui ? m_ui->creditsView->toPlainText() : QString();
}

std::unique_ptr<QWidget> QWAboutViewController::loadView()
{
    auto view = std::make_unique<QWidget>();
    m_ui = std::make_unique<Ui::QWAboutViewController>();
    m_ui->setupUi(view.get());
    return view;
}

void QWAboutViewController::qw_viewDidLoad()
{
    m_ui->iconLabel->setPixmap(
        QIcon(applicationIconResource)
            .pixmap(QSize(iconSize, iconSize), m_ui->iconLabel->devicePixelRatioF()));
    m_ui->nameLabel->setText(nameText());
    QFont nameFont = m_ui->nameLabel->font();
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.6);
    nameFont.setBold(true);
    m_ui->nameLabel->setFont(nameFont);
    m_ui->versionLabel->setText(versionText());
    QFont titleFont = m_ui->creditsTitleLabel->font();
    titleFont.setBold(true);
    m_ui->creditsTitleLabel->setFont(titleFont);

    QString html = QStringLiteral("<table cellspacing=\"0\" cellpadding=\"3\" width=\"100%\">");
    for (const Credit &credit : credits()) {
        html += QStringLiteral("<tr><td><b>%1</b><br/><span style=\"color:#6b6b6b\">%2</span>"
                               "</td><td align=\"right\" valign=\"top\">%3</td></tr>")
                    .arg(credit.name.toHtmlEscaped(), credit.use.toHtmlEscaped(),
                        credit.licence.toHtmlEscaped());
    }
    html += QStringLiteral("</table><p style=\"margin-left:3px\">%1</p>")
                .arg(tr("The full licence texts are in /usr/share/doc.").toHtmlEscaped());
    m_ui->creditsView->setHtml(html);
}

#include "kit/widgets/QWCompositingManager.h"
#include "kit/widgets/QWX11Connection.h"
#include "notewindow/SNStickyWindow.h"
#include "support/QWProgramDriver.h"

#include <QRegularExpression>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using QWX11Connection::takeReply;

namespace {

using Connection = std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)>;

// Stands in for a compositor: a client of its own that owns the compositing selection of the
// screen for as long as it is connected, as picom or a desktop's window manager does.
Connection startCompositor()
{
    int screen = 0;
    Connection connection(xcb_connect(nullptr, &screen), &xcb_disconnect);
    xcb_connection_t *c = connection.get();
    const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(screen);
    const auto atom = takeReply(xcb_intern_atom_reply(
        c, xcb_intern_atom(c, 0, uint16_t(name.size()), name.constData()), nullptr));
    const xcb_window_t owner = xcb_generate_id(c);
    xcb_create_window(c, XCB_COPY_FROM_PARENT, owner,
        xcb_setup_roots_iterator(xcb_get_setup(c)).data->root, 0, 0, 1, 1, 0,
        XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_set_selection_owner(c, owner, atom->atom, XCB_CURRENT_TIME);
    // Owned once the server has taken the request.
    takeReply(xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    return connection;
}

// The depth of a new note window as the X server has it: 32 with an alpha channel.
int newNoteWindowDepth()
{
    SNStickyWindow window;
    window.show();
    const bool exposed = QTest::qWaitForWindowExposed(&window);
    const QString info = QWProgramDriver::run(
        u"xwininfo"_s, { u"-id"_s, QString::number(window.windowHandle()->winId()) });
    return exposed ? QRegularExpression(u"Depth: (\\d+)"_s).match(info).captured(1).toInt() : -1;
}

} // namespace

class TestQWCompositingManagerIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Note windows have an alpha channel only while a compositor runs (openbox does not).
    void followsCompositorsThatStartAndStop()
    {
        QVERIFY(!QWCompositingManager::isRunning());
        QCOMPARE(newNoteWindowDepth(), 24);
        {
            const Connection compositor = startCompositor();
            QTRY_VERIFY(QWCompositingManager::isRunning());
            QCOMPARE(newNoteWindowDepth(), 32);
        }
        // Gone with its client, as when a compositor quits or crashes.
        QTRY_VERIFY(!QWCompositingManager::isRunning());
    }
};

QTEST_MAIN(TestQWCompositingManagerIntegration)
#include "TestQWCompositingManagerIntegration.moc"

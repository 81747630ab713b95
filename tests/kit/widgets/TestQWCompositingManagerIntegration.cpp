#include "kit/widgets/QWCompositingManager.h"
#include "notewindow/SNStickyWindow.h"

#include <QTest>
#include <QWindow>

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

namespace {

template <class Reply> std::unique_ptr<Reply, decltype(&std::free)> take(Reply *reply)
{
    return { reply, &std::free };
}

// Stands in for a compositor: a client of its own that owns the compositing selection of the
// screen for as long as it is connected, as picom or a desktop's window manager does.
class StandInCompositor final
{
public:
    StandInCompositor()
    {
        int screen = 0;
        m_connection = xcb_connect(nullptr, &screen);
        const xcb_screen_t *root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
        const QByteArray name = "_NET_WM_CM_S" + QByteArray::number(screen);
        const auto atom = take(xcb_intern_atom_reply(m_connection,
            xcb_intern_atom(m_connection, 0, static_cast<uint16_t>(name.size()), name.constData()),
            nullptr));
        const xcb_window_t owner = xcb_generate_id(m_connection);
        xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, owner, root->root, 0, 0, 1, 1, 0,
            XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_set_selection_owner(m_connection, owner, atom->atom, XCB_CURRENT_TIME);
        // Owned once the server has taken the request.
        take(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    }
    ~StandInCompositor() { xcb_disconnect(m_connection); }
    Q_DISABLE_COPY_MOVE(StandInCompositor)

private:
    xcb_connection_t *m_connection;
};

// The depth of the window's X11 window as the server has it: 32 with an alpha channel.
int depth(const QWidget &window)
{
    xcb_connection_t *connection = xcb_connect(nullptr, nullptr);
    const auto geometry = take(xcb_get_geometry_reply(connection,
        xcb_get_geometry(connection, static_cast<xcb_window_t>(window.windowHandle()->winId())),
        nullptr));
    const int result = geometry ? geometry->depth : -1;
    xcb_disconnect(connection);
    return result;
}

} // namespace

class TestQWCompositingManagerIntegration final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsCompositorsThatStartAndStop();
    void noteWindowsHaveAnAlphaChannelOnlyUnderACompositor();
};

void TestQWCompositingManagerIntegration::followsCompositorsThatStartAndStop()
{
    // openbox does not composite.
    QVERIFY(!QWCompositingManager::isRunning());
    {
        const StandInCompositor compositor;
        QTRY_VERIFY(QWCompositingManager::isRunning());
    }
    // Gone with its client, as when a compositor quits or crashes.
    QTRY_VERIFY(!QWCompositingManager::isRunning());
}

void TestQWCompositingManagerIntegration::noteWindowsHaveAnAlphaChannelOnlyUnderACompositor()
{
    SNStickyWindow opaque;
    QVERIFY(!opaque.testAttribute(Qt::WA_TranslucentBackground));
    opaque.show();
    QVERIFY(QTest::qWaitForWindowExposed(&opaque));
    QCOMPARE(depth(opaque), 24);

    const StandInCompositor compositor;
    QTRY_VERIFY(QWCompositingManager::isRunning());
    SNStickyWindow translucent;
    QVERIFY(translucent.testAttribute(Qt::WA_TranslucentBackground));
    translucent.show();
    QVERIFY(QTest::qWaitForWindowExposed(&translucent));
    QCOMPARE(depth(translucent), 32);
}

QTEST_MAIN(TestQWCompositingManagerIntegration)
#include "TestQWCompositingManagerIntegration.moc"

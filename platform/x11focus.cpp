#include "platform/x11focus.h"

#include <QGuiApplication>
#include <QWidget>

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

namespace
{

/// What the server answered, or nothing if it could not.
template<typename Reply>
using Answer = std::unique_ptr<Reply, decltype(&std::free)>;

template<typename Reply>
Answer<Reply> answer(Reply* reply)
{
    return {reply, &std::free};
}

auto attributesOf(xcb_connection_t* connection, xcb_window_t window)
{
    return answer(xcb_get_window_attributes_reply(
        connection, xcb_get_window_attributes(connection, window), nullptr));
}

auto treeAround(xcb_connection_t* connection, xcb_window_t window)
{
    return answer(xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
}

/// Whether a window is one that a user works with: menus and the like take no keyboard.
bool isWorkedWith(const xcb_get_window_attributes_reply_t& window)
{
    return window.map_state == XCB_MAP_STATE_VIEWABLE && window.override_redirect == 0 &&
           window._class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
}

/// Whether the news to the root window is that the window which had the keyboard has gone.
bool isOrphaned(const xcb_focus_in_event_t& event)
{
    return event.detail == XCB_NOTIFY_DETAIL_INFERIOR ||
           event.detail == XCB_NOTIFY_DETAIL_POINTER_ROOT || event.detail == XCB_NOTIFY_DETAIL_NONE;
}

xcb_connection_t* toolkitsConnection()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->connection() : nullptr;
}

bool isManaged(xcb_connection_t* connection, xcb_window_t rootWindow)
{
    const auto root = attributesOf(connection, rootWindow);
    return root == nullptr || (root->all_event_masks & XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT) != 0;
}

} // namespace

bool isX11WithoutManager()
{
    xcb_connection_t* connection = toolkitsConnection();
    return connection != nullptr &&
           !isManaged(connection, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root);
}

X11Focus::X11Focus(QWidget& window) : window_(window), connection_(toolkitsConnection()) {}

X11Focus::~X11Focus() = default;

void X11Focus::watch()
{
    if (connection_ == nullptr || root_ != 0)
        return;
    const auto tree = treeAround(connection_, xcb_window_t(window_.winId()));
    if (tree == nullptr)
        return;
    const auto root = attributesOf(connection_, tree->root);
    if (root == nullptr)
        return;
    root_ = tree->root;
    // The toolkit has its own wishes on this connection.
    const uint32_t events = root->your_event_mask | XCB_EVENT_MASK_FOCUS_CHANGE;
    xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &events);
    qGuiApp->installNativeEventFilter(this);
}

void X11Focus::take()
{
    if (connection_ == nullptr || root_ == 0 || isManaged(connection_, root_))
        return;
    // With the time of the last event, as the toolkit does it, the server would refuse what comes
    // after another program's wish.
    xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_PARENT, xcb_window_t(window_.winId()),
                        XCB_CURRENT_TIME);
    xcb_flush(connection_);
}

bool X11Focus::isTopmost() const
{
    const auto tree = treeAround(connection_, root_);
    if (tree == nullptr)
        return false;
    const xcb_window_t* windows = xcb_query_tree_children(tree.get());
    for (int i = xcb_query_tree_children_length(tree.get()) - 1; i >= 0; --i) {
        const auto about = attributesOf(connection_, windows[i]);
        if (about != nullptr && isWorkedWith(*about))
            return windows[i] == xcb_window_t(window_.winId());
    }
    return false;
}

bool X11Focus::nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/)
{
    constexpr unsigned KindOfEvent = 0x7f;
    if (type != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<xcb_generic_event_t*>(message);
    if ((event->response_type & KindOfEvent) != XCB_FOCUS_IN)
        return false;
    const auto* focus = static_cast<xcb_focus_in_event_t*>(message);
    if (focus->event == root_ && isOrphaned(*focus) && isTopmost())
        take();
    return false;
}

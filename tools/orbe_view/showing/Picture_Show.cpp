#include "showing/Picture_Show.h"

#include <stdexcept>

namespace Pelgar::ORBE::view {

namespace {

// 25 a second.
constexpr auto between_pictures = std::chrono::milliseconds(40);
// Every so manieth picture is a whole one.
constexpr std::uint64_t whole_pictures = 5;

} // namespace

Picture_Show::Picture_Show(A_Source& source, bool may_control)
    : m_source(source), m_may_control(may_control), m_maker(source, may_control),
      m_thread(&Picture_Show::run, this) {}

Picture_Show::~Picture_Show() {
    stop();
}

void Picture_Show::stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_stops = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable()) {
        m_thread.join();
    }
    m_viewers.clear();
}

void Picture_Show::page_came(const std::shared_ptr<A_Page_Link>& page) {
    page->show(std::make_shared<const Picture>(m_maker.introduction()));
    const std::lock_guard lock(m_mutex);
    m_viewers.emplace(page, Viewer{});
}

void Picture_Show::page_said(const std::shared_ptr<A_Page_Link>& page, const std::string& text) {
    try {
        obey(page, parse_page_message(text));
    } catch (const std::invalid_argument& error) {
        page->complain(std::string("orbe-view does not understand: ") + error.what(), true);
    }
}

void Picture_Show::page_left(const std::shared_ptr<A_Page_Link>& page) {
    const std::lock_guard lock(m_mutex);
    m_viewers.erase(page);
}

void Picture_Show::obey(const std::shared_ptr<A_Page_Link>& page, const Page_Message& message) {
    if (message.view) {
        const std::lock_guard lock(m_mutex);
        const auto viewer = m_viewers.find(page);
        if (viewer != m_viewers.end()) {
            viewer->second.request = *message.view;
            viewer->second.is_new = true;
        }
    }
    if (message.jump) {
        m_source.jump(message.jump->seconds, message.jump->plays);
    }
    if (message.plays) {
        m_source.play(*message.plays);
    }
    if (message.streams && !m_may_control) {
        page->complain("The box is not changed from here: orbe-view was started without --control.", false);
    } else if (message.streams && !m_source.stream(*message.streams)) {
        page->complain("There is no box to change.", false);
    }
}

void Picture_Show::run() {
    std::uint64_t round = 0;
    auto next = Clock::now();
    while (true) {
        {
            std::unique_lock lock(m_mutex);
            if (m_changed.wait_until(lock, next, [this] { return m_stops; })) {
                return;
            }
        }
        show_all(round++ % whole_pictures == 0);
        // A busy machine makes fewer pictures, and does not catch up.
        next = std::max(next + between_pictures, Clock::now());
    }
}

void Picture_Show::show_all(bool is_whole) {
    std::vector<std::shared_ptr<A_Page_Link>> pages;
    {
        const std::lock_guard lock(m_mutex);
        for (const auto& [page, viewer] : m_viewers) {
            pages.push_back(page);
        }
    }
    for (const auto& page : pages) {
        if (page->is_free()) {
            show(page, is_whole);
        } else {
            ++m_dropped;
        }
    }
}

void Picture_Show::show(const std::shared_ptr<A_Page_Link>& page, bool is_whole) {
    View_Request request;
    std::uint64_t number = 0;
    {
        const std::lock_guard lock(m_mutex);
        const auto viewer = m_viewers.find(page);
        if (viewer == m_viewers.end()) {
            return;
        }
        request = viewer->second.request;
        number = viewer->second.number++;
        is_whole = std::exchange(viewer->second.is_new, false) || is_whole;
    }
    page->show(std::make_shared<const Picture>(m_maker.make(request, number, is_whole)));
    ++m_pictures;
}

} // namespace Pelgar::ORBE::view

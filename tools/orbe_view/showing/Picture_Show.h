// Program orbe-view, showing. Makes the pictures for all connected pages, at their pace, on a thread of its
// own, and does what the pages ask for. A page that is not done with its pictures gets fewer of them; nothing
// else notices.
#pragma once

#include "pictures/Picture_Maker.h"
#include "sources/A_Source.h"
#include "web/I_Pages.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Pelgar::ORBE::view {

class Picture_Show final : public I_Pages {
public:
    // The source must outlive the object. `may_control`: whether pages may change the box.
    Picture_Show(A_Source& source, bool may_control);
    ~Picture_Show();
    Picture_Show(const Picture_Show&) = delete;
    Picture_Show& operator=(const Picture_Show&) = delete;

    // ---- The server's thread.

    void page_came(const std::shared_ptr<A_Page_Link>& page) override;
    void page_said(const std::shared_ptr<A_Page_Link>& page, const std::string& text) override;
    void page_left(const std::shared_ptr<A_Page_Link>& page) override;

    // ---- The thread that ends the server. No more pictures are made.

    void server_ends() override { stop(); }

    // ---- Any thread.

    std::uint64_t pictures() const { return m_pictures; }

    // Pictures that were not made because a page was not done with the one before.
    std::uint64_t dropped() const { return m_dropped; }

private:
    using Clock = std::chrono::steady_clock;

    struct Viewer {
        View_Request request;
        bool is_new = true; // gets a whole picture next
        std::uint64_t number = 0;
    };

    using Viewers = std::map<std::shared_ptr<A_Page_Link>, Viewer>;

    void stop();
    void run();
    void show_all(bool is_whole);
    void show(const std::shared_ptr<A_Page_Link>& page, bool is_whole);
    void obey(const std::shared_ptr<A_Page_Link>& page, const Page_Message& message);

    A_Source& m_source;
    bool m_may_control;
    Picture_Maker m_maker; // of the thread
    std::atomic<std::uint64_t> m_pictures{0};
    std::atomic<std::uint64_t> m_dropped{0};

    std::mutex m_mutex;
    std::condition_variable m_changed;
    Viewers m_viewers;
    bool m_stops = false;
    std::thread m_thread; // last: it uses the others
};

} // namespace Pelgar::ORBE::view

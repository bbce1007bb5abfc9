// Program orbe-view, web. What Boost's headers would otherwise compile once more in every source that
// includes them.
#include <boost/asio/impl/src.hpp>
#include <boost/beast/src.hpp>

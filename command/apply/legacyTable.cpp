#include "command/apply/legacyTable.h"

#include <linux/netfilter_ipv4/ip_tables.h>
#include <linux/netfilter_ipv6/ip6_tables.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "command/console.h"
#include "posix/descriptor.h"

namespace zamofw {
namespace {

constexpr const char* kTable = "filter";
// Whoever does not know the lock may change the table between two calls.
constexpr int kAttempts = 10;

struct Ipv4 {
    using Info = ipt_getinfo;
    using Entries = ipt_get_entries;
    using Entry = ipt_entry;
    using Replacement = ipt_replace;
    static constexpr int kNumber = 4;
    static constexpr int kSocket = AF_INET;
    static constexpr int kLevel = IPPROTO_IP;
    static constexpr int kGetInfo = IPT_SO_GET_INFO;
    static constexpr int kGetEntries = IPT_SO_GET_ENTRIES;
    static constexpr int kReplace = IPT_SO_SET_REPLACE;
    static constexpr int kAddCounters = IPT_SO_SET_ADD_COUNTERS;
};

struct Ipv6 {
    using Info = ip6t_getinfo;
    using Entries = ip6t_get_entries;
    using Entry = ip6t_entry;
    using Replacement = ip6t_replace;
    static constexpr int kNumber = 6;
    static constexpr int kSocket = AF_INET6;
    static constexpr int kLevel = IPPROTO_IPV6;
    static constexpr int kGetInfo = IP6T_SO_GET_INFO;
    static constexpr int kGetEntries = IP6T_SO_GET_ENTRIES;
    static constexpr int kReplace = IP6T_SO_SET_REPLACE;
    static constexpr int kAddCounters = IP6T_SO_SET_ADD_COUNTERS;
};

// A structure of the kernel's with what follows it, which is filled later: a large table takes a
// megabyte.
template <typename Head>
class Message {
  public:
    explicit Message(std::size_t tail) : size_(sizeof(Head) + tail), bytes_(new char[size_]) {
        std::memset(bytes_.get(), 0, sizeof(Head));
        std::strcpy(head()->name, kTable);
    }
    Head* head() { return reinterpret_cast<Head*>(bytes_.get()); }
    [[nodiscard]] const char* tail() const { return bytes_.get() + sizeof(Head); }
    char* tail() { return bytes_.get() + sizeof(Head); }
    [[nodiscard]] socklen_t size() const { return static_cast<socklen_t>(size_); }

  private:
    std::size_t size_;
    std::unique_ptr<char[]> bytes_;
};

template <typename Family>
class Table : public LegacyTable {
  public:
    Table()
        : socket_(posix::aboveStandardStreams(
              posix::Descriptor(socket(Family::kSocket, SOCK_DGRAM | SOCK_CLOEXEC, 0)))) {}

    bool read() {
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            if (!getInfo(info_)) {
                return false;
            }
            entries_ = Message<typename Family::Entries>(info_.size);
            entries_.head()->size = info_.size;
            if (get(Family::kGetEntries, entries_.head(), entries_.size())) {
                return true;
            }
            if (errno != EAGAIN) {
                return false;
            }
        }
        return false;
    }

    void putBack() const override {
        if (!replace() || !addCounters()) {
            failed("the rules of one family could not be put into force, and the old ones of IPv" +
                       std::to_string(Family::kNumber) +
                       " could not be put back: " + std::strerror(errno),
                   "find the cause, then run `zamofw reload`; `zamofw disable` opens the firewall");
        }
    }

  private:
    bool get(int option, void* value, socklen_t size) const {
        return getsockopt(socket_.get(), Family::kLevel, option, value, &size) == 0;
    }
    bool set(int option, const void* value, socklen_t size) const {
        return setsockopt(socket_.get(), Family::kLevel, option, value, size) == 0;
    }
    bool getInfo(typename Family::Info& info) const {
        info = {};
        std::strcpy(info.name, kTable);
        return get(Family::kGetInfo, &info, sizeof info);
    }

    // The kernel gives the counters of the table that goes, and wants to know how many.
    bool replace() const {
        Message<typename Family::Replacement> message(info_.size);
        typename Family::Replacement& head = *message.head();
        head.valid_hooks = info_.valid_hooks;
        head.num_entries = info_.num_entries;
        head.size = info_.size;
        std::memcpy(head.hook_entry, info_.hook_entry, sizeof head.hook_entry);
        std::memcpy(head.underflow, info_.underflow, sizeof head.underflow);
        std::memcpy(message.tail(), entries_.tail(), info_.size);
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            typename Family::Info now;
            if (!getInfo(now)) {
                return false;
            }
            std::vector<xt_counters> gone(now.num_entries);
            head.num_counters = now.num_entries;
            head.counters = gone.data();
            if (set(Family::kReplace, &head, message.size())) {
                return true;
            }
            if (errno != EAGAIN) {
                return false;
            }
        }
        return false;
    }

    // The counters of a new table begin at 0.
    bool addCounters() const {
        Message<xt_counters_info> message(info_.num_entries * sizeof(xt_counters));
        message.head()->num_counters = info_.num_entries;
        const char* entry = entries_.tail();
        for (unsigned i = 0; i < info_.num_entries; ++i) {
            typename Family::Entry head;
            std::memcpy(&head, entry, sizeof head);
            std::memcpy(
                message.tail() + i * sizeof(xt_counters), &head.counters, sizeof(xt_counters));
            entry += head.next_offset;
        }
        return set(Family::kAddCounters, message.head(), message.size());
    }

    posix::Descriptor socket_;
    typename Family::Info info_ = {};
    Message<typename Family::Entries> entries_{0};
};

template <typename Family>
std::unique_ptr<LegacyTable> readTable() {
    auto table = std::make_unique<Table<Family>>();
    return table->read() ? std::move(table) : nullptr;
}

}  // namespace

std::unique_ptr<LegacyTable> readLegacyTable(int family) {
    return family == 4 ? readTable<Ipv4>() : readTable<Ipv6>();
}

}  // namespace zamofw

// Reads what the code under test writes to the system log.
#ifndef TESTS_SUPPORT_SYSTEMLOG_H
#define TESTS_SUPPORT_SYSTEMLOG_H

#include <string>
#include <vector>

namespace test {

// Receives the log's datagrams in place of the system's daemon while it lives.
class SystemLog {
  public:
    SystemLog();
    ~SystemLog();
    SystemLog(const SystemLog&) = delete;
    SystemLog& operator=(const SystemLog&) = delete;

    // The lines since the last call, without the program's name and the source line:
    // "fwDB: Failed to profileSet". A line at another priority than error begins with it:
    // "debug fwIptables: ...".
    std::vector<std::string> take();

  private:
    int socket_ = -1;
};

}  // namespace test

#endif

#pragma once

#include "SystemLog.h"

namespace tidemark {

/// The log of the system, by syslog(3); under systemd that is its journal.
class Syslog final : public SystemLog {
public:
    void warn(const std::string& line) override;
};

}  // namespace tidemark

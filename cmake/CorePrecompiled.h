// What most sources of the core include anyway; each still includes what it uses.
#pragma once

#include <QString>
#include <QUuid>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <variant>
#include <vector>

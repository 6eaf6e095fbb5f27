// What most tests include anyway; each still includes what it uses.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QString>

#include <optional>
#include <string>
#include <vector>

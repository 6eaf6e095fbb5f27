#include "RandomName.h"

#include <QByteArray>
#include <QRandomGenerator>

#include <algorithm>

namespace tidemark::RandomName {

namespace {

constexpr int digitCount = 16;

}  // namespace

std::string digits()
{
    return QByteArray::number(QRandomGenerator::system()->generate64(), 16)
        .rightJustified(digitCount, '0')
        .toStdString();
}

bool isDigits(std::string_view text)
{
    return text.size() == digitCount && std::ranges::all_of(text, [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
    });
}

}  // namespace tidemark::RandomName

#include "zuviurlrequest.h"

namespace {
QByteArray findHeader(const ZuviHeaderPairs &headers, const QByteArray &name)
{
    for (const auto &pair : headers) {
        if (pair.first.compare(name, Qt::CaseInsensitive) == 0)
            return pair.second;
    }
    return {};
}
} // namespace

void ZuviURLRequest::setHeader(const QByteArray &name, const QByteArray &value)
{
    for (auto &pair : headers) {
        if (pair.first.compare(name, Qt::CaseInsensitive) == 0) {
            pair.second = value;
            return;
        }
    }
    headers.append({name, value});
}

QByteArray ZuviURLRequest::header(const QByteArray &name) const
{
    return findHeader(headers, name);
}

bool ZuviURLRequest::hasHeader(const QByteArray &name) const
{
    for (const auto &pair : headers) {
        if (pair.first.compare(name, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

QByteArray ZuviHTTPResponse::header(const QByteArray &name) const
{
    return findHeader(headers, name);
}

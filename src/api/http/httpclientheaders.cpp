#include "httpclient.h"

#include <algorithm>

namespace {

template <class Fields>
auto find(Fields& fields, const QByteArray& name)
{
    return std::find_if(fields.begin(), fields.end(), [&](const HttpClientHeaders::Field& field) {
        return field.first.compare(name, Qt::CaseInsensitive) == 0;
    });
}

} // namespace

void HttpClientHeaders::insert(const QByteArray& name, const QByteArray& value)
{
    remove(name);
    append(name, value);
}

void HttpClientHeaders::append(const QByteArray& name, const QByteArray& value)
{
    m_fields.append({ name, value });
}

QByteArray HttpClientHeaders::value(const QByteArray& name, const QByteArray& defaultValue) const
{
    const auto field = find(m_fields, name);
    return field != m_fields.end() ? field->second : defaultValue;
}

bool HttpClientHeaders::contains(const QByteArray& name) const
{
    return find(m_fields, name) != m_fields.end();
}

void HttpClientHeaders::remove(const QByteArray& name)
{
    for (auto field = find(m_fields, name); field != m_fields.end(); field = find(m_fields, name))
        m_fields.erase(field);
}

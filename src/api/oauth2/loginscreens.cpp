#include "loginscreens.h"

#include "tavumediadata.h"
#include "trstring.h"

namespace loginscreens {

namespace {

QString text(const char* source, const QList<TrArg>& args = {})
{
    return TrString(TrCharData(trExtractContext("OAuth2UiDeviceCode"), source), args).toString();
}

TavuRoles row(TavuRolesType::Enum type, const QString& title)
{
    TavuRoles roles;
    roles.setType(type);
    roles.setTitle(title);
    roles.setDoNotTrack(true);
    return roles;
}

TavuRoles message(const TavuOAuth2DeviceCode& login, const QString& description)
{
    TavuRoles roles = row(TavuRolesType::Message, container(login).title());
    roles.setLongDescription(description);
    return roles;
}

TavuRoles code(const TavuOAuth2DeviceCode& login)
{
    TavuRoles roles = row(TavuRolesType::Message, login.userCode());
    roles.setLongDescription(text("Your code"));
    return roles;
}

TavuRoles link(const TavuOAuth2DeviceCode& login)
{
    const QString complete = login.verificationUriComplete();
    TavuResource resource;
    resource.setUri(complete.isEmpty() ? login.verificationUri() : complete);
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMediaData media;
    media.setResources(resources);
    TavuRoles roles = row(TavuRolesType::Link, text("Open %1", { login.verificationUri() }));
    roles.setMediaData(media);
    return roles;
}

TavuRoles newCodeAction(const CMPath& newCode)
{
    TavuRoles roles = row(TavuRolesType::Action, text("Get a new code"));
    roles.setPath(newCode);
    return roles;
}

QString joined(const QString& notice, const QString& description)
{
    return notice.isEmpty() ? description : notice + QLatin1Char('\n') + description;
}

} // namespace

TavuRoles container(const TavuOAuth2DeviceCode& login)
{
    TavuRoles roles = row(TavuRolesType::Folder, text("Sign in to %1", { login.displayName() }));
    roles.setContainerType(TavuRolesContainerType::List);
    roles.setContainerPlayable(false);
    return roles;
}

QList<TavuRoles> rows(
    const TavuOAuth2DeviceCode& login, const CMPath& newCode, const QString& notice)
{
    const QString state = login.state();
    if (state == QLatin1String("waiting"))
        return { message(login,
                     joined(notice,
                         text("On a phone or a computer, go to %1 and enter the code %2.",
                             { login.verificationUri(), login.userCode() }))),
            code(login), link(login), newCodeAction(newCode) };
    if (state == QLatin1String("failed"))
        return { message(login, login.message()), newCodeAction(newCode) };
    if (state == QLatin1String("loggedIn"))
        return { message(login, text("You are signed in.")) };
    return { message(login, joined(notice, text("Getting a code. This takes a moment."))) };
}

} // namespace loginscreens

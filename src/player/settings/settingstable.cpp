#include "settings.h"

namespace player {

namespace {

SettingInfo setting(
    const char* key, SettingType type, const char* defaultValue, const char* description)
{
    return { QString::fromLatin1(key), type, QString::fromLatin1(defaultValue),
        QString::fromLatin1(description) };
}

using Type = SettingType;

QVector<SettingInfo> ofService()
{
    return {
        setting(
            "service.base-url", Type::Url, "", "Where the service's root page is. Ends in \"/\"."),
        setting("service.authorization-url", Type::Url, "",
            "The service's OAuth 2 authorization endpoint."),
        setting("service.token-url", Type::Url, "", "The service's OAuth 2 token endpoint."),
        setting("service.device-code-url", Type::Url, "",
            "The service's OAuth 2 device authorization endpoint (RFC 8628)."),
        setting("service.client-id", Type::Text, "", "The partner's client id."),
        setting("service.client-secret-file", Type::Text, "",
            "A file, readable by the player alone, that holds the partner's client secret."),
        setting("service.scope", Type::Text, "", "The scope that a login asks for."),
        setting("service.domain-suffix", Type::Text, "",
            "The suffix, with its leading dot, of the hosts among which the service may move the "
            "player. The access token goes to these hosts and the base URL's alone."),
        setting("service.device-capability", Type::Text, "",
            "What the device can play, as the service wants it told. Empty: not told."),
        setting("service.max-queue-size", Type::Number, "500",
            "How many tracks of an endless station are kept to go back to."),
        setting("service.ca-file", Type::Text, "",
            "A PEM file of further certificate authorities to trust."),
        setting("service.connect-to", Type::Mappings, "",
            "host:port:address:port, several separated by blanks: where connections to a host "
            "really go. For test services on this machine."),
    };
}

QVector<SettingInfo> ofPlayer()
{
    return {
        setting("player.name", Type::Text, "tavu", "What the player calls itself."),
        setting("player.output", Type::Text, "auto",
            "Where the sound goes: \"auto\", a device's id, or a GStreamer sink description."),
        setting("player.volume", Type::Percent, "100",
            "Volume at the first start, 0 to 100; later it starts with the last one."),
        setting("player.resume", Type::Boolean, "false",
            "Whether a player that ended while it played goes on by itself when it is started. "
            "Otherwise it is paused where it was."),
        setting("player.previous-limit-ms", Type::Number, "3000",
            "Up to so many milliseconds into a track \"previous\" goes to the track before; "
            "later it restarts the track."),
        setting("player.mpris", Type::Boolean, "true",
            "Whether desktops and media keys may steer the player over D-Bus (MPRIS)."),
        setting("player.mpris-bus", Type::Bus, "auto",
            "The bus for that: session, system, or auto: the session's where there is one."),
        setting("player.plugin", Type::Text, "",
            "The plug-in to load. Empty: the one that came with the player."),
        setting("player.plugin-settings", Type::Text, "",
            "name=value, several separated by blanks: what the plug-in is told when it is made. "
            "A blank within a value is written %20, a percent sign %25."),
        setting("player.network-file", Type::Text, "",
            "A file in which another program writes \"up\" or \"down\": whether there is a "
            "network. "
            "Empty: the system's interfaces tell."),
        setting("player.state-folder", Type::Text, "",
            "Where tokens and state are kept. Empty: the user's state folder."),
    };
}

QVector<SettingInfo> ofControlAndLog()
{
    return {
        setting("control.address", Type::Address, "127.0.0.1",
            "The address that the control API and the web page listen on. Any other than a "
            "loopback address asks clients for the token."),
        setting("control.port", Type::Port, "6680", "Their port; 0 takes any that is free."),
        setting("control.token-file", Type::Text, "",
            "The file that keeps the token; made when it is missing. Empty: in the state folder."),
        setting("control.hosts", Type::Text, "",
            "Further host names, separated by blanks, under which clients may address the player."),
        setting("log.level", Type::LogLevel, "info", "trace, debug, info, warn, error or off."),
        setting("log.file", Type::Text, "", "A file for the log. Empty: standard error."),
    };
}

} // namespace

const QVector<SettingInfo>& Settings::all()
{
    static const QVector<SettingInfo> table = ofService() + ofPlayer() + ofControlAndLog();
    return table;
}

} // namespace player

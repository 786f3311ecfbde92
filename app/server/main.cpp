// postvane-server [--data DIR] [--port N] [--bind ADDR] [--roles LIST] [--create-store] [--sample]
#include "foundation/Startup.h"
#include "engine/ServerRoles.h"
#include "server/PostvaneServer.h"
#include "server/SignalWatcher.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <cstdio>

int main(int argc, char **argv)
{
    SignalWatcher::Block();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("postvane-server"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The Postvane server: its HTTPS web service and configuration."));
    parser.addHelpOption();
    const QCommandLineOption data(QStringLiteral("data"),
                                  QStringLiteral("The data folder (default $XDG_DATA_HOME/Postvane)."),
                                  QStringLiteral("DIR"));
    const QCommandLineOption port(QStringLiteral("port"),
                                  QStringLiteral("The port to listen on (default WebAccessPort, 8855; 0 for any free port)."),
                                  QStringLiteral("N"));
    const QCommandLineOption bind(QStringLiteral("bind"),
                                  QStringLiteral("The address to listen on (default WebAccessBindTo, or every address)."),
                                  QStringLiteral("ADDR"));
    const QCommandLineOption create(QStringLiteral("create-store"),
                                    QStringLiteral("Make the data folder, its store and first user, then end."));
    const QCommandLineOption roles(QStringLiteral("roles"),
                                   QStringLiteral("The roles to play, separated by commas: web, edge, processor, "
                                                  "mailserver, outgoing (default all)."),
                                   QStringLiteral("LIST"));
    const QCommandLineOption sample(QStringLiteral("sample"),
                                    QStringLiteral("On the first start of a fresh data folder, set up a sample account "
                                                   "with three messages to process."));
    parser.addOptions({data, port, bind, create, roles, sample});
    parser.process(app);

    ServerOptions options;
    options.DataFolder = parser.value(data);
    options.BindTo = parser.value(bind);
    options.CreateOnly = parser.isSet(create);
    options.Sample = parser.isSet(sample);
    QString rolesError;
    if (!ServerRoles::ParseRoles(parser.value(roles), options.Roles, rolesError)) {
        std::fprintf(stderr, "postvane-server: %s\n", qPrintable(rolesError));
        return 2;
    }
    if (parser.isSet(port)) {
        bool number = false;
        options.Port = parser.value(port).toInt(&number);
        if (!number || options.Port < 0 || options.Port > 65535) {
            std::fprintf(stderr, "postvane-server: --port needs a number from 0 to 65535.\n");
            return 2;
        }
    }

    SetStartupProperties(app.arguments());
    PostvaneServer server;
    if (!server.Start(options))
        return 1;
    if (options.CreateOnly)
        return 0;
    SignalWatcher watcher;
    QObject::connect(&watcher, &SignalWatcher::Stop, &app, [&server] {
        server.Stop();
        QCoreApplication::quit();
    });
    return app.exec();
}

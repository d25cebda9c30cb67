#pragma once

#include <QCoreApplication>
#include <QList>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTest>

#include <utility>

/// What a second process of a test's own executable said. For what is settled once a process, when
/// the application object is made; main() must look for the arguments and answer them.
struct SelfRun {
    int status = -1; ///< exit status; -1 if it did not end by itself
    QByteArray output;
    QByteArray errors;

    /// Variables with a null value are taken out of the environment.
    static SelfRun with(const QStringList& arguments,
                        const QList<std::pair<QString, QString>>& variables)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const auto& [name, value] : variables) {
            if (value.isNull())
                environment.remove(name);
            else
                environment.insert(name, value);
        }
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral("/proc/self/exe"), arguments);
        SelfRun result;
        if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
            return result;
        result.status = process.exitCode();
        result.output = process.readAllStandardOutput();
        result.errors = process.readAllStandardError();
        return result;
    }
};

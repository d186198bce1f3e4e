// SPDX-License-Identifier: GPL-3.0-or-later
#include <QGenericPlugin>

#include "driver.h"

// Qt loads generic plugins by name from QT_QPA_GENERIC_PLUGINS into any program, so the driver
// works inside the program exactly as it is shipped.
class DriverPlugin : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "driver.json")
  public:
    QObject* create(const QString& /*name*/, const QString& /*spec*/) override {
        const QString script = qEnvironmentVariable("DAVO_DRIVER_SCRIPT");
        return script.isEmpty() ? nullptr : new davo::test::Driver(script);
    }
};

#include "plugin.moc"

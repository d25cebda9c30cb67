#pragma once

#include "tests/sharing/sharefixture.h"

#include <QObject>

#include <memory>

/// A test object with the services of ShareFixture, which all its functions use.
class ShareTest : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<ShareFixture> fixture_;

protected slots:
    void initTestCase() { fixture_ = std::make_unique<ShareFixture>(); }
    void init() { fixture_->init(); }
    void cleanup() { fixture_->cleanup(); }
    void cleanupTestCase() { fixture_.reset(); }
};

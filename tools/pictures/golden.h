// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDir>
#include <QStringList>

namespace davo::test {

// The sets of which folder keeps pictures, and the names of those of a set. A file that is empty
// asks for its picture.
QStringList KeptSets(const QDir& folder);
QStringList KeptPictures(const QDir& folder, const QString& set);

// Those of kept that differ from those of made; each is named with its set. A page, index.html in
// made, shows them: kept, made, and what differs.
QStringList DifferentPictures(const QDir& kept, const QDir& made);

// Keeps these pictures of made.
void RenewPictures(const QDir& kept, const QDir& made, const QStringList& pictures);

}  // namespace davo::test

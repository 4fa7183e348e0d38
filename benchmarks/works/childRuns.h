#pragma once

#include <QtCore/QStringList>

// What has to happen in a process of its own: this program starts itself with the option --child.

/// Does what a child is told to and prints what it measured; returns the exit status.
/// - start-ours COUNT PICTURE, start-plain COUNT PICTURE: milliseconds by both clocks, from making the
///   context to the first picture of so many polylines, which is saved to the file
/// - memory COUNT: bytes that the process keeps when so many polylines have been drawn
int runChild(const QStringList& arguments);
/// Starts a child and returns the numbers that it printed; throws std::runtime_error.
QStringList askChild(const QStringList& arguments);

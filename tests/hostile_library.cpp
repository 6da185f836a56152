#include <velq/library.h>
const Automation::Velq::LibraryTable* CvxQuellisLibInitialize() { return nullptr; }

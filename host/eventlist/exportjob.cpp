#include "exportjob.h"

ExportJob::ExportJob(const ExportRequest& request, QObject* parent)
    : QThread(parent)
    , m_request(request)
{}

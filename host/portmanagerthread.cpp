#include "portmanagerthread.h"

#include "portmanage.h"

PortManagerThread::PortManagerThread()
{
    start();
    m_ready.acquire();
}

PortManagerThread::~PortManagerThread()
{
    quit();
    wait();
}

void PortManagerThread::run()
{
    PortManage manager; // its timer belongs to the thread that makes it
    m_manager = &manager;
    m_ready.release();
    exec();
}

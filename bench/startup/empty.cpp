// The least that a Qt Core program does: the yardstick for the start of the tool.
#include <QCoreApplication>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    return 0;
}

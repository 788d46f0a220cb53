// Writing a solution back to its file.
#include "project/ProjectSystem.h"
#include "project/xml/XMLDocument.h"
#include "project/xml/XMLNode.h"
#include "support/HException.h"
#include "support/Pool.h"

namespace {

// What a dynamic folder made, and what another file holds, is not written. The depth is that of the
// tree, which came from a document of bounded depth.
XMLElement* elementToDom(XMLDocument& document, const ProjectElement* element)
{
    XMLElement* made = document.mkXMLElement(ProjectElement::tagName(element->tag()));
    element->getAttributesFrom(made);
    for (const auto& [name, configuration] : element->configurations())
        made->appendChild(elementToDom(document, configuration.get()));
    for (const auto& child : element->children()) {
        if (child->generated())
            continue;
        if (child->tag() == ProjectElement::Solution) {
            XMLElement* imported = document.mkXMLElement("import");
            imported->setAttribute("file_name",
                                   child->attribute(QStringLiteral("file_name")).toUtf8().constData());
            made->appendChild(imported);
        } else {
            made->appendChild(elementToDom(document, child.get()));
        }
    }
    return made;
}

} // namespace

void ProjectSystem::saveProjectFile(ProjectElement* solution)
{
    XMLDocument document(false);
    document.setDocumentType("Anvil_Project_File");
    CurrentPool current(&document.pool());
    XMLElement* root = elementToDom(document, solution);
    // Where an imported solution lies is told by the file that imports it.
    root->removeAttribute("file_name");
    document.setRoot(root);
    if (!document.save(solution->path().osPath().c_str(), 2))
        throw HException(QString::fromUtf8(document.errorText()));
    solution->setFileTime(QFileInfo(solution->path().osPathQString()).lastModified());
}

void ProjectSystem::save()
{
    if (!m_solution)
        throw HException("no solution");
    QList<ProjectElement*> pending{m_solution.get()};
    while (!pending.isEmpty()) {
        ProjectElement* solution = pending.takeLast();
        saveProjectFile(solution);
        for (const auto& child : solution->children())
            if (child->tag() == ProjectElement::Solution)
                pending.append(child.get());
    }
}

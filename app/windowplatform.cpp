#include "app/windowplatform.h"

WindowArguments::WindowArguments() : m_texts(windowArguments())
{
    m_pointers.reserve(m_texts.size() + 1);
    for (std::string &text : m_texts)
        m_pointers.push_back(&text[0]);
    count = static_cast<int>(m_pointers.size());
    m_pointers.push_back(nullptr);
}

#pragma once

/// Has screen readers hear of dialogs and bars what the toolkit does not tell them. To be called once, when
/// there is an application object.
void describeToScreenReaders();
